#pragma once

#include "harness/TemporaryFolder.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace driftmark::test {

/// A folder on another volume than that of temporary files, removed with its contents.
class OtherVolume {
public:
  OtherVolume();

  /// False when this machine has no second volume to write to.
  bool exists() const { return folder_.has_value(); }

  /// Only where it exists.
  const std::filesystem::path& path() const { return folder_.value().path(); }
  std::string path(std::string_view name) const { return folder_.value().path(name); }

private:
  std::optional<TemporaryFolder> folder_;
};

} // namespace driftmark::test
