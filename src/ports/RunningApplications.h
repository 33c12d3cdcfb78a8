#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace driftmark {

/// The processes of applications, and signals to them. Main thread only.
class RunningApplications {
public:
  virtual ~RunningApplications() = default;

  /// The process identifiers of the running copies of the application with that bundle identifier,
  /// wherever their bundles are. This process may be among them. A newer copy ends the others in
  /// this order; each adapter decides it: Linux lists the earliest start first, macOS lists them as
  /// the system does, which documents no order.
  virtual std::vector<std::int32_t> withBundleIdentifier(const std::string& identifier) const = 0;

  /// Sends SIGTERM. A failure is ignored.
  virtual void sendTerminate(std::int32_t process) = 0;

  /// Sends SIGKILL. A failure is ignored.
  virtual void sendKill(std::int32_t process) = 0;

  /// Whether the process exists, even as another user's.
  virtual bool isRunning(std::int32_t process) const = 0;
};

} // namespace driftmark
