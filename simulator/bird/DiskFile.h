#pragma once

#include "bird/FileContents.h"

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace icloud {

/// Why a client's request cannot be carried out, in words for that client.
class Refusal : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;

  static constexpr const char* noSuchFile = "no such file";
  static constexpr const char* notInDrive = "not in iCloud Drive";
  static constexpr const char* isFolder = "is a folder";
  static constexpr const char* stillUploading = "still uploading";
  static constexpr const char* stillDownloading = "still downloading";
  static constexpr const char* inUse = "in use by another program";
};

/// A file of the drive on disk. Its size is always that of the file in iCloud; it has blocks only
/// for the contents that are on this disk. Every operation throws std::system_error unless it says
/// otherwise.
class DiskFile {
public:
  explicit DiskFile(std::filesystem::path path) : path_(std::move(path)) {}

  void createWithContents(const FileContents& contents) const;
  void createEmptied(std::uint64_t bytes) const;

  /// Writes the bytes from `before` to `present`. The file's times stay.
  void fetch(const FileContents& contents, std::uint64_t before, std::uint64_t present) const;

  /// Frees all blocks; size and times stay.
  void dropContents(std::uint64_t bytes) const;

  /// Marks the file as evicted, then frees its blocks. Throws Refusal, and changes nothing, when
  /// the file holds other bytes than iCloud or another process has it open.
  void evict(const FileContents& contents) const;

  /// Frees the blocks of a file that is marked as evicted, unless the file was changed since.
  void finishEviction(const FileContents& contents) const;

  /// Throws Refusal when a file without contents was written to.
  void checkEmptied() const;

  /// Makes the file read-only for everybody.
  void lock() const;

  void remove() const;

  /// Stores the cloud state with the file, where the file system supports attributes.
  void note(const char* state) const;

  /// The stored state; empty when there is none or the file cannot be read. Does not throw.
  std::string noted() const;

  /// Whether a regular file is at the path. Does not throw.
  bool exists() const;

  /// How many of the first `bytes` bytes are on disk; all when the file cannot be read.
  std::uint64_t present(std::uint64_t bytes) const;

  static constexpr const char* stateAttribute = "user.icloud.state";
  static constexpr const char* currentState = "current";
  static constexpr const char* evictedState = "evicted";

private:
  std::filesystem::path path_;
};

} // namespace icloud
