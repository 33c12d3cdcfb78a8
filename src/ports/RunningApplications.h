#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace driftmark {

/// The processes of applications, and signals to them. Main thread only.
class RunningApplications {
public:
  /// When a process started, in a unit of the system. Later starts have no smaller numbers,
  /// whatever happens to the wall clock.
  using StartTime = std::uint64_t;

  virtual ~RunningApplications() = default;

  /// The process identifiers of the running copies of the application with that bundle identifier,
  /// wherever their bundles are. This process may be among them, and so may copies that started
  /// later. Each adapter decides the order: Linux lists the earliest start first, macOS lists them
  /// as the system does, which documents no order.
  virtual std::vector<std::int32_t> withBundleIdentifier(const std::string& identifier) const = 0;

  /// When the process started; absent when no such process runs or the system does not tell.
  virtual std::optional<StartTime> startTime(std::int32_t process) const = 0;

  /// Sends SIGTERM. A failure is ignored.
  virtual void sendTerminate(std::int32_t process) = 0;

  /// Sends SIGKILL. A failure is ignored.
  virtual void sendKill(std::int32_t process) = 0;

  /// Whether the process exists, even as another user's.
  virtual bool isRunning(std::int32_t process) const = 0;
};

} // namespace driftmark
