#pragma once

#include "ports/Clock.h"
#include "ports/Environment.h"
#include "ports/RunningApplications.h"

#include <thread>

/// The adapters without state that both frontends share: each call goes to the system.
namespace driftmark {

/// The system's wall clock.
class PosixClock final : public Clock {
public:
  Date now() const override { return std::chrono::system_clock::now(); }
  void sleep(Seconds duration) override { std::this_thread::sleep_for(duration); }
};

/// The environment that this process was started with.
class PosixEnvironment final : public Environment {
public:
  std::optional<std::string> variable(const std::string& name) const override;
};

/// Sends signals to other processes, each to a single one: an identifier that the system takes for
/// several processes does nothing. The frontend decides which processes are applications.
class PosixRunningApplications : public RunningApplications {
public:
  void sendTerminate(std::int32_t process) override;
  void sendKill(std::int32_t process) override;
  bool isRunning(std::int32_t process) const override;
};

} // namespace driftmark
