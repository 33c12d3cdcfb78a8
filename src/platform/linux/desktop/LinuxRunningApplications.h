#pragma once

#include "platform/linux/SystemRoot.h"
#include "platform/posix/PosixAdapters.h"

#include <string>

namespace driftmark {

/// The processes of this system, told apart by the bundles that their executables lie in. One with
/// another system root runs on another system. Nothing is kept, so nothing goes stale.
class LinuxRunningApplications final : public PosixRunningApplications {
public:
  explicit LinuxRunningApplications(const SystemRoot& root) : systemRoot_(root.path()) {}

  /// The oldest first. Copies that came up after this process are left out: they take over from it,
  /// not it from them, so that of several copies started at once the newest remains. A process
  /// whose executable this user may not see is left out too.
  std::vector<std::int32_t> withBundleIdentifier(const std::string& identifier) const override;

private:
  const std::string systemRoot_;
};

} // namespace driftmark
