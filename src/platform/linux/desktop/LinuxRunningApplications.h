#pragma once

#include "platform/linux/SystemRoot.h"
#include "platform/posix/PosixAdapters.h"

#include <string>

namespace driftmark {

/// The processes of this machine, identified by the bundles of their executables. A process with
/// another system root belongs to another system. Every call reads /proc anew.
class LinuxRunningApplications final : public PosixRunningApplications {
public:
  explicit LinuxRunningApplications(const SystemRoot& root) : systemRoot_(root.path()) {}

  /// The oldest first. Leaves out copies that started after this process: those take over from this
  /// one, so that the newest of several copies started together remains. Also leaves out processes
  /// whose executable this user may not see.
  std::vector<std::int32_t> withBundleIdentifier(const std::string& identifier) const override;

private:
  const std::string systemRoot_;
};

} // namespace driftmark
