#pragma once

#include "ports/PlatformError.h"

#include <optional>
#include <string>

namespace driftmark {

/// The file system. Paths are absolute byte strings. Any thread.
///
/// The operations that change something return no value on success. They act on a symbolic link
/// itself, never on its target; links above the last component are followed.
class FileSystem {
public:
  virtual ~FileSystem() = default;

  /// Whether an item exists at `path`, links followed. False when that cannot be determined.
  virtual bool fileExists(const std::string& path) const = 0;

  /// The user's home folder, without a trailing slash.
  virtual std::string homeDirectory() const = 0;

  /// The user's folder for temporary files, with a trailing slash. No other user can enter it.
  virtual std::string temporaryDirectory() const = 0;

  /// Makes a folder and the missing ones above it. An existing folder, or a link to one, is no
  /// failure.
  [[nodiscard]] virtual std::optional<PlatformError> createDirectory(const std::string& path) = 0;

  /// Removes a file, or a folder with its contents.
  [[nodiscard]] virtual std::optional<PlatformError> removeItem(const std::string& path) = 0;

  /// Moves an item, between volumes too. Fails when `to` exists. A failed move leaves the whole
  /// item at `from`. At every moment, even when this process ends abruptly, the whole item is at
  /// one of the two paths, and an item at `to` is whole.
  [[nodiscard]] virtual std::optional<PlatformError> moveItem(const std::string& from,
                                                              const std::string& to) = 0;

  /// Moves an item to the user's trash, from where it can be put back.
  [[nodiscard]] virtual std::optional<PlatformError> trashItem(const std::string& path) = 0;

  /// The system's error for a write that failed for an unknown reason.
  virtual PlatformError unknownWriteError() const = 0;
};

} // namespace driftmark
