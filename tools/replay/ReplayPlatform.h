#pragma once

#include "monitor/SyncMonitor.h"
#include "platform/linux/desktop/LinuxFileSystem.h"
#include "platform/linux/desktop/LinuxText.h"
#include "platform/linux/runloop/LinuxBackgroundQueue.h"
#include "platform/linux/runloop/LinuxMainQueue.h"
#include "platform/posix/children/PosixChildProcesses.h"
#include "ports/Environment.h"
#include "ports/SystemLog.h"
#include "replay/PlayedChildren.h"

#include <atomic>
#include <functional>
#include <string>

namespace driftmark {

/// A clock that stands still until it is told: however long a capture plays, its lines count as
/// read at one moment.
class StandingClock final : public Clock {
public:
  Date now() const override { return now_; }
  void sleep(Seconds duration) override { advance(duration); }
  void advance(Seconds delay) { now_ = later(now_, delay); }

private:
  std::atomic<Date> now_ = std::chrono::system_clock::now();
};

/// A file system in which every file exists: those of a capture are on another machine.
class EveryFileExists final : public LinuxFileSystem {
public:
  using LinuxFileSystem::LinuxFileSystem;
  bool fileExists(const std::string& /*path*/) const override { return true; }
};

/// Log lines go to standard error, or nowhere.
class ReplayLog final : public SystemLog {
public:
  explicit ReplayLog(bool shown) : shown_(shown) {}
  void log(std::string_view line) override;

private:
  bool shown_;
};

/// An empty environment: settings of the user who replays are not those of the capture.
class NoEnvironment final : public Environment {
public:
  std::optional<std::string> variable(const std::string& /*name*/) const override { return {}; }
};

/// The program's own adapters, decorated where a capture differs from life. Lives on the main
/// thread, which runs a QCoreApplication.
class ReplayPlatform {
public:
  struct Options {
    std::string systemRoot;
    bool showLog = false;
    std::function<void()> onAllEnded; ///< everything was played and delivered
  };

  explicit ReplayPlatform(const Options& options);
  ReplayPlatform(const ReplayPlatform&) = delete;
  ReplayPlatform& operator=(const ReplayPlatform&) = delete;
  ~ReplayPlatform();

  SyncMonitor::Ports ports();

  StandingClock& clock() { return clock_; }
  MainQueue& mainQueue() { return mainQueue_; }
  const PlayedChildren& children() const { return children_; }

private:
  StandingClock clock_;
  ReplayLog log_;
  EveryFileExists fileSystem_{""};
  NoEnvironment environment_;
  LinuxText text_;
  LinuxMainQueue mainQueue_;
  PosixChildProcesses processes_;
  PlayedChildren children_;
  LinuxBackgroundQueue backgroundQueue_;
};

} // namespace driftmark
