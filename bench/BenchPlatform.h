#pragma once

#include "monitor/SyncMonitor.h"
#include "platform/linux/desktop/LinuxAdapters.h"
#include "ports/BackgroundQueue.h"
#include "ports/ChildProcesses.h"
#include "ports/Clock.h"
#include "ports/Environment.h"
#include "ports/MainQueue.h"
#include "ports/Platform.h"
#include "ports/SystemLog.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace driftmark::bench {

class BenchClock : public Clock {
public:
  Date now() const override { return std::chrono::system_clock::now(); }
  void sleep(Seconds /*duration*/) override {}
};

/// Discards log lines.
class BenchSystemLog : public SystemLog {
public:
  void log(std::string_view line) override { bytes_ += line.size(); }

private:
  std::size_t bytes_ = 0;
};

/// Drops every task: a round ends before one would be due.
class BenchMainQueue : public MainQueue {
public:
  void async(Task task) override;
  void after(Seconds delay, Task task) override;
  std::unique_ptr<Timer> repeat(Seconds interval, Seconds tolerance, Task task) override;
};

class BenchBackgroundQueue : public BackgroundQueue {
public:
  [[nodiscard]] std::optional<PlatformError> async(QualityOfService quality, Task task) override;
};

/// Starts no process: the bench hands the monitor its output.
class BenchChildProcesses : public ChildProcesses {
public:
  std::variant<TerminalChild, LaunchError> spawn(const ToolCommand& command, DataHandler onData,
                                                 ExitHandler onExit) override;
  std::shared_ptr<ToolRun> prepare(const ToolCommand& command, ToolOutput output) override;
  std::optional<LaunchError> launchDetached(const ToolCommand& command) override;

  /// Hands `bytes` to the per-item monitor, `chunk` bytes at a time.
  void feed(std::string_view bytes, std::size_t chunk = maxChunkSize) const;

private:
  DataHandler itemData_;
};

/// A home folder where every file exists.
class BenchFileSystem : public LinuxFileSystem {
public:
  BenchFileSystem() : LinuxFileSystem("") {}
  bool fileExists(const std::string& /*path*/) const override { return true; }
  std::string homeDirectory() const override { return "/Users/maren"; }
};

class BenchEnvironment : public Environment {
public:
  std::optional<std::string> variable(const std::string& /*name*/) const override { return {}; }
};

class BenchText : public LinuxSystemText {
public:
  std::string byteCount(std::int64_t bytes) const override { return std::to_string(bytes); }
};

/// The adapters of `all`, with those given here in their place.
Platform replaced(const Platform& all, ChildProcesses& children, StatusBar& statusBar,
                  SystemLog& log, Dialogs& dialogs);

/// All that a monitor needs, without processes, tasks or a disk.
struct BenchPlatform {
  BenchClock clock;
  BenchMainQueue mainQueue;
  BenchBackgroundQueue backgroundQueue;
  BenchChildProcesses children;
  BenchSystemLog log;
  BenchFileSystem disk;
  BenchEnvironment environment;
  BenchText text;
  SyncMonitor::Ports ports{clock, mainQueue, backgroundQueue, children,
                           log,   disk,      environment,     text};
};

} // namespace driftmark::bench
