#pragma once

#include "bird/Contents.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace icloud {

/// A file of the drive as it lies on disk: its logical size is always that of the file in iCloud,
/// its blocks are those of the contents that are here. Every operation throws std::system_error,
/// and does nothing to a file that is only `recalled`: what is done to it was done before.
class DiskFile {
public:
  explicit DiskFile(std::filesystem::path path, bool recalled = false)
      : path_(std::move(path)), recalled_(recalled) {}

  void createWithContents(const Contents& contents) const;
  void createEmptied(std::uint64_t bytes) const;

  /// Takes in the bytes up to `present`, those up to `before` being here. The file's times stay.
  void fetch(const Contents& contents, std::uint64_t before, std::uint64_t present) const;

  /// Gives all blocks back; size and times stay.
  void dropContents(std::uint64_t bytes) const;

  /// Gives up contents that iCloud has: first the file is noted as evicted, then its blocks go.
  /// Throws Refusal, and changes nothing, when the file holds other bytes or is open elsewhere.
  void evict(const Contents& contents) const;

  /// Throws Refusal when a file without contents was written to.
  void checkEmptied() const;

  /// Takes away everybody's right to write to the file.
  void lock() const;

  void remove() const;

  /// Notes the cloud state with the file, where the file system keeps such notes.
  void note(const char* state) const;

  /// The state that was noted; empty when none was, or the file cannot be reached.
  std::string noted() const;

  static constexpr const char* stateAttribute = "user.icloud.state";
  static constexpr const char* currentState = "current";
  static constexpr const char* evictedState = "evicted";
  static constexpr const char* downloadingState = "downloading";

private:
  std::filesystem::path path_;
  bool recalled_;
};

} // namespace icloud
