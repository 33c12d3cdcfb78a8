#pragma once

#include "monitor/SyncMonitor.h"
#include "platform/linux/desktop/LinuxAdapters.h"
#include "platform/linux/runloop/LinuxBackgroundQueue.h"
#include "platform/linux/runloop/LinuxMainQueue.h"
#include "platform/posix/children/PosixChildProcesses.h"
#include "ports/ChildProcesses.h"
#include "ports/Environment.h"
#include "ports/SystemLog.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <string>

namespace driftmark {

/// A clock that only `advance` moves: however long a capture plays, its lines count as read at one
/// moment.
class ReplayClock final : public Clock {
public:
  Date now() const override { return now_; }
  void sleep(Seconds duration) override { advance(duration); }
  void advance(Seconds delay) { now_ = later(now_, delay); }

private:
  std::atomic<Date> now_ = std::chrono::system_clock::now();
};

/// Every file exists: those of a capture are on another machine.
class ReplayFileSystem final : public LinuxFileSystem {
public:
  using LinuxFileSystem::LinuxFileSystem;
  bool fileExists(const std::string& /*path*/) const override { return true; }
};

/// Log lines go to standard error, or nowhere.
class ReplaySystemLog final : public SystemLog {
public:
  explicit ReplaySystemLog(bool shown) : shown_(shown) {}
  void log(std::string_view line) override;

private:
  bool shown_;
};

/// Empty: the settings of whoever replays are not those of the capture.
class ReplayEnvironment final : public Environment {
public:
  std::optional<std::string> variable(const std::string& /*name*/) const override { return {}; }
};

/// Runs the monitors once: it keeps their exits from the core, which would restart them, and
/// reports them here.
class ReplayChildProcesses : public ChildProcesses {
public:
  /// `children` outlives this object. `onAllEnded` is called on the main thread once every monitor
  /// that was started has ended and its output was delivered.
  ReplayChildProcesses(ChildProcesses& children, std::function<void()> onAllEnded)
      : children_(children), onAllEnded_(std::move(onAllEnded)) {}

  std::variant<TerminalChild, LaunchError> spawn(const ToolCommand& command, DataHandler onData,
                                                 ExitHandler onExit) override;
  std::shared_ptr<ToolRun> prepare(const ToolCommand& command, ToolOutput output) override;
  std::optional<LaunchError> launchDetached(const ToolCommand& command) override;

  /// Why a monitor could not be started; empty when all were.
  const std::string& failure() const { return failure_; }

private:
  ChildProcesses& children_;
  std::function<void()> onAllEnded_;
  std::size_t running_ = 0;
  std::string failure_;
};

/// The program's own adapters, replaced where a capture differs from live output. Main thread only;
/// needs a QCoreApplication.
class ReplayPlatform {
public:
  struct Options {
    std::string systemRoot;
    bool showLog = false;
    std::function<void()> onAllEnded; ///< called when all output was delivered
  };

  explicit ReplayPlatform(const Options& options);
  ReplayPlatform(const ReplayPlatform&) = delete;
  ReplayPlatform& operator=(const ReplayPlatform&) = delete;
  ~ReplayPlatform();

  SyncMonitor::Ports ports();

  ReplayClock& clock() { return clock_; }
  MainQueue& mainQueue() { return mainQueue_; }
  const ReplayChildProcesses& children() const { return children_; }

private:
  ReplayClock clock_;
  ReplaySystemLog log_;
  ReplayFileSystem fileSystem_{""};
  ReplayEnvironment environment_;
  LinuxSystemText text_;
  LinuxMainQueue mainQueue_;
  PosixChildProcesses processes_;
  ReplayChildProcesses children_;
  LinuxBackgroundQueue backgroundQueue_;
};

} // namespace driftmark
