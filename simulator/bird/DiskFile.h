#pragma once

#include <cstdint>
#include <filesystem>

namespace icloud {

/// A file of the drive as it lies on disk: its logical size is always that of the file in iCloud,
/// its blocks are those of the contents that are here. Every operation throws std::system_error,
/// and does nothing to a file that is only `recalled`: what is done to it was done before.
class DiskFile {
public:
  explicit DiskFile(std::filesystem::path path, bool recalled = false)
      : path_(std::move(path)), recalled_(recalled) {}

  void createWithContents(std::uint64_t bytes) const;
  void createEmptied(std::uint64_t bytes) const;

  /// Takes blocks for the first `present` bytes.
  void fetch(std::uint64_t present) const;

  /// Gives all blocks back.
  void dropContents(std::uint64_t bytes) const;

  void remove() const;

  /// Notes the cloud state with the file, where the file system keeps such notes.
  void note(const char* state) const;

  static constexpr const char* stateAttribute = "user.icloud.state";

private:
  std::filesystem::path path_;
  bool recalled_;
};

} // namespace icloud
