#pragma once

#include "ports/FileSystem.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>

namespace driftmark {

/// The folder for this user's temporary files, which nobody else can enter: `driftmark-UID` in
/// `TMPDIR`, or in /tmp if that is not an absolute path. If another item has that name, a new
/// folder beside it. Any thread.
class TemporaryDirectory {
public:
  /// The path with a slash at its end, the same as long as the folder stays private. The folder
  /// exists when this returns. Fails when no private folder can be made.
  std::variant<std::string, PlatformError> path();

private:
  std::mutex mutex_;
  std::string path_; ///< empty until the first call
};

/// The file system of this machine, without the trash, which the frontend adds. Make it on the main
/// thread.
class PosixFileSystem : public FileSystem {
public:
  /// `systemRoot` is put before "/Applications" and the paths below it; "" and "/" stand for none.
  explicit PosixFileSystem(std::string systemRoot);

  /// A path that the system cannot take, such as one with a NUL, names nothing.
  bool fileExists(const std::string& path) const override;
  bool itemExists(const std::string& path) const override;
  bool isLink(const std::string& path) const override;
  bool areSameItem(const std::string& one, const std::string& other) const override;

  /// `HOME` at the time when this object was made; if that was not an absolute path, the folder in
  /// the user database. Empty when that folder is the root.
  std::string homeDirectory() const override { return homeDirectory_; }

  /// See `TemporaryDirectory`.
  std::variant<std::string, PlatformError> temporaryDirectory() const override {
    return temporaryDirectory_.path();
  }

  /// A link to a folder counts as a folder.
  std::optional<PlatformError> createDirectory(const std::string& path) override;

  /// See `removeTree` for permissions.
  std::optional<PlatformError> removeItem(const std::string& path) override;

  /// See `moveTree` for what an interrupted move between volumes leaves.
  std::optional<PlatformError> moveItem(const std::string& from, const std::string& to) override;

  /// See `moveTreeKeeping`.
  std::variant<std::unique_ptr<MovedItem>, PlatformError>
  moveItemReversibly(const std::string& from, const std::string& to) override;

  PlatformError unknownWriteError() const override;

protected:
  /// The real path on this machine of the item at `path`.
  std::string located(const std::string& path) const;

private:
  const std::string systemRoot_;
  const std::string homeDirectory_;
  mutable TemporaryDirectory temporaryDirectory_;
};

} // namespace driftmark
