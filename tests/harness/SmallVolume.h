#pragma once

#include "harness/TemporaryFolder.h"

#include <cstddef>
#include <filesystem>
#include <string>

namespace driftmark::test {

/// A volume of a few kibibytes in memory, in a folder of its own. Gone with this object.
class SmallVolume {
public:
  /// `size` is in bytes.
  explicit SmallVolume(std::size_t size);
  SmallVolume(const SmallVolume&) = delete;
  SmallVolume& operator=(const SmallVolume&) = delete;
  ~SmallVolume();

  /// False when this user may not mount volumes.
  bool exists() const { return isMounted_; }

  const std::filesystem::path& path() const { return folder_.path(); }

private:
  TemporaryFolder folder_;
  bool isMounted_;
};

} // namespace driftmark::test
