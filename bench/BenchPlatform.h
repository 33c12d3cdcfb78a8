#pragma once

#include "monitor/SyncMonitor.h"
#include "platform/linux/desktop/LinuxFileSystem.h"
#include "platform/linux/desktop/LinuxText.h"
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

class WallClock : public Clock {
public:
  Date now() const override { return std::chrono::system_clock::now(); }
  void sleep(Seconds /*duration*/) override {}
};

/// Log lines go nowhere.
class NoLog : public SystemLog {
public:
  void log(std::string_view line) override { bytes_ += line.size(); }

private:
  std::size_t bytes_ = 0;
};

/// Nothing that is put off is ever run: a round is over before it would be due.
class IdleQueue : public MainQueue {
public:
  void async(Task task) override;
  void after(Seconds delay, Task task) override;
  std::unique_ptr<Timer> repeat(Seconds interval, Seconds tolerance, Task task) override;
};

class IdleBackground : public BackgroundQueue {
public:
  void async(QualityOfService quality, Task task) override;
};

/// Children that print what they are told to, when they are told to.
class FedChildren : public ChildProcesses {
public:
  std::variant<TerminalChild, LaunchError> spawn(const ToolCommand& command, DataHandler onData,
                                                 ExitHandler onExit) override;
  std::shared_ptr<ToolRun> prepare(const ToolCommand& command, ToolOutput output) override;
  std::optional<LaunchError> launchDetached(const ToolCommand& command) override;

  /// Hands `bytes` to the per-item monitor, `chunk` bytes at a time.
  void feed(std::string_view bytes, std::size_t chunk = largestChunk) const;

private:
  DataHandler itemData_;
};

/// A home folder where every file exists.
class FullDisk : public LinuxFileSystem {
public:
  FullDisk() : LinuxFileSystem("") {}
  bool fileExists(const std::string& /*path*/) const override { return true; }
  std::string homeDirectory() const override { return "/Users/maren"; }
};

class BareEnvironment : public Environment {
public:
  std::optional<std::string> variable(const std::string& /*name*/) const override { return {}; }
};

class PlainText : public LinuxText {
public:
  std::string byteCount(std::int64_t bytes) const override { return std::to_string(bytes); }
};

/// A platform's adapters but for these.
Platform replaced(const Platform& all, ChildProcesses& children, StatusBar& statusBar,
                  SystemLog& log, Dialogs& dialogs);

/// The least platform that a monitor runs on.
struct BenchPlatform {
  WallClock clock;
  IdleQueue mainQueue;
  IdleBackground backgroundQueue;
  FedChildren children;
  NoLog log;
  FullDisk disk;
  BareEnvironment environment;
  PlainText text;
  SyncMonitor::Ports ports{clock, mainQueue, backgroundQueue, children,
                           log,   disk,      environment,     text};
};

} // namespace driftmark::bench
