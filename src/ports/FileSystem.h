#pragma once

#include "ports/PlatformError.h"

#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace driftmark {

/// An item that was moved and can still go back. Any thread.
class MovedItem {
public:
  /// Removes what was kept of the original, unless `putBack` was called.
  virtual ~MovedItem() = default;

  /// Moves the item back to its old path without needing space for it, even between volumes. Fails
  /// when that path is taken; the whole item is then still at its new path. Call it at most once.
  [[nodiscard]] virtual std::optional<PlatformError> putBack() = 0;
};

/// The file system. Paths are absolute byte strings. Any thread.
///
/// The operations that change something return no value on success. They act on a symbolic link
/// itself, never on its target; links above the last component are followed.
class FileSystem {
public:
  virtual ~FileSystem() = default;

  /// Whether an item exists at `path`, links followed. False when that cannot be determined.
  virtual bool fileExists(const std::string& path) const = 0;

  /// Whether an item has this name, a link to nothing included. False when that cannot be
  /// determined.
  virtual bool itemExists(const std::string& path) const = 0;

  /// Whether the item with this name is a symbolic link. False when that cannot be determined.
  virtual bool isLink(const std::string& path) const = 0;

  /// Whether both paths lead to one and the same item on disk, however they are spelled, links
  /// followed. False when either does not exist or that cannot be determined.
  virtual bool areSameItem(const std::string& one, const std::string& other) const = 0;

  /// The user's home folder, without a trailing slash.
  virtual std::string homeDirectory() const = 0;

  /// The user's folder for temporary files, with a trailing slash. No other user can enter it:
  /// fails when that cannot be ensured.
  virtual std::variant<std::string, PlatformError> temporaryDirectory() const = 0;

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

  /// Moves an item like `moveItem`. Between volumes the original stays, under a hidden name beside
  /// `from`, as long as the result lives.
  [[nodiscard]] virtual std::variant<std::unique_ptr<MovedItem>, PlatformError>
  moveItemReversibly(const std::string& from, const std::string& to) = 0;

  /// Moves an item to the user's trash, from where it can be put back.
  [[nodiscard]] virtual std::optional<PlatformError> trashItem(const std::string& path) = 0;

  /// The system's error for a write that failed for an unknown reason.
  virtual PlatformError unknownWriteError() const = 0;
};

} // namespace driftmark
