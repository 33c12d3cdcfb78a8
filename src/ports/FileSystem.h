#pragma once

#include "ports/PlatformError.h"

#include <optional>
#include <string>

namespace driftmark {

/// The file system as this program needs it. Paths are absolute byte strings. Any thread.
///
/// The operations that change something return no value when they succeeded. They act on a symbolic
/// link itself, never on what it points to; the folders above the last component are followed.
class FileSystem {
public:
  virtual ~FileSystem() = default;

  /// Whether something is at `path`, links followed. What cannot be determined counts as absent.
  virtual bool fileExists(const std::string& path) const = 0;

  /// The user's home folder, without a trailing slash.
  virtual std::string homeDirectory() const = 0;

  /// The user's folder for temporary files, with a trailing slash. Nobody else can enter it.
  virtual std::string temporaryDirectory() const = 0;

  /// Makes a folder and the missing ones above it. A folder that is there already, be it through a
  /// link, is no failure.
  [[nodiscard]] virtual std::optional<PlatformError> createDirectory(const std::string& path) = 0;

  /// Removes a file, or a folder with all that it holds.
  [[nodiscard]] virtual std::optional<PlatformError> removeItem(const std::string& path) = 0;

  /// Moves an item, between volumes too. Fails where something is at `to` already. A failed move
  /// leaves the whole item at `from`. At every moment, an abrupt end of this process included, the
  /// whole item is at one of the two places, and what is at `to` is whole.
  [[nodiscard]] virtual std::optional<PlatformError> moveItem(const std::string& from,
                                                              const std::string& to) = 0;

  /// Moves an item to the user's trash, where it can be put back.
  [[nodiscard]] virtual std::optional<PlatformError> trashItem(const std::string& path) = 0;

  /// The system's error for a write that failed for no known reason.
  virtual PlatformError unknownWriteError() const = 0;
};

} // namespace driftmark
