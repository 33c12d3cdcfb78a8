#pragma once

#include <filesystem>
#include <string>

namespace driftmark::test {

/// A folder of a test's own on another volume than the one for temporary files, removed with all
/// that it holds.
class OtherVolume {
public:
  OtherVolume();
  OtherVolume(const OtherVolume&) = delete;
  OtherVolume& operator=(const OtherVolume&) = delete;
  ~OtherVolume();

  /// False where this machine has no second volume that can be written.
  bool exists() const { return !path_.empty(); }

  std::string path() const { return path_.string(); }
  std::string path(const std::string& name) const { return (path_ / name).string(); }

private:
  std::filesystem::path path_;
};

} // namespace driftmark::test
