#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace driftmark {

/// The processes of applications, and what can be done to them. Main thread only.
class RunningApplications {
public:
  virtual ~RunningApplications() = default;

  /// The process identifiers of the running copies of the application with that bundle identifier,
  /// wherever their bundles lie; this process may be among them.
  virtual std::vector<std::int32_t> withBundleIdentifier(const std::string& identifier) const = 0;

  /// Sends SIGTERM. A failure is ignored.
  virtual void sendTerminate(std::int32_t process) = 0;

  /// Sends SIGKILL. A failure is ignored.
  virtual void sendKill(std::int32_t process) = 0;

  /// Whether the process exists, be it another user's.
  virtual bool isRunning(std::int32_t process) const = 0;
};

} // namespace driftmark
