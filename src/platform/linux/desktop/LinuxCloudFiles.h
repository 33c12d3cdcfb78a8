#pragma once

#include "ports/ChildProcesses.h"
#include "ports/CloudFiles.h"

#include <atomic>

namespace driftmark {

/// The files of the simulated iCloud Drive: how a file stands is noted in an attribute of its own,
/// and `brctl` evicts it.
class LinuxCloudFiles final : public CloudFiles {
public:
  /// Keeps the state of a file of the drive. A file without it is none of iCloud's.
  static constexpr const char* stateAttribute = "user.icloud.state";

  /// The children outlive this object.
  explicit LinuxCloudFiles(ChildProcesses& childProcesses) : childProcesses_(childProcesses) {}

  void walk(const std::string& folder, const PluginConnection& visit) const override;

  /// The error is what the tool said.
  std::optional<PlatformError> evict(const std::string& path) override;

  /// Lets a walk end with the item at hand. No eviction is begun from now on and none fails, as
  /// nobody is there to be told.
  void shutdown() { closing_ = true; }

private:
  ChildProcesses& childProcesses_;
  std::atomic<bool> closing_ = false;
};

} // namespace driftmark
