#pragma once

#include "ports/ChildProcesses.h"
#include "ports/CloudFiles.h"

#include <atomic>

namespace driftmark {

/// The files of the simulated iCloud Drive: an extended attribute of each file holds its state, and
/// `brctl` evicts it.
class LinuxCloudFiles final : public CloudFiles {
public:
  /// The attribute with the state of a file. A file without it does not belong to iCloud.
  static constexpr const char* stateAttribute = "user.icloud.state";

  /// The children outlive this object.
  explicit LinuxCloudFiles(ChildProcesses& childProcesses) : childProcesses_(childProcesses) {}

  void walk(const std::string& folder, const EntryHandler& visit) const override;

  /// The error is the tool's error output.
  std::optional<PlatformError> evict(const std::string& path) override;

  /// Ends a walk with its current item. From now on no eviction is started, and none reports an
  /// error: nobody would read it.
  void shutdown() { closing_ = true; }

private:
  ChildProcesses& childProcesses_;
  std::atomic<bool> closing_ = false;
};

} // namespace driftmark
