#pragma once

#include "platform/posix/files/TemporaryDirectory.h"
#include "ports/FileSystem.h"

namespace driftmark {

/// The file system of this machine, but for the trash, which is the desktop's. Make it on the main
/// thread.
class PosixFileSystem : public FileSystem {
public:
  /// `systemRoot` is put before "/Applications" and the paths below it; "" and "/" stand for none.
  explicit PosixFileSystem(std::string systemRoot);

  /// A path that the system cannot take, such as one with a NUL in it, names nothing.
  bool fileExists(const std::string& path) const override;

  /// `HOME` as it was when this object was made; where that is not an absolute path, the folder in
  /// the user database. Empty when that folder is the root.
  std::string homeDirectory() const override { return homeDirectory_; }

  /// See `TemporaryDirectory`.
  std::string temporaryDirectory() const override { return temporaryDirectory_.path(); }

  /// A link to a folder counts as a folder.
  std::optional<PlatformError> createDirectory(const std::string& path) override;

  /// Nothing is removed where the folder above may not be changed; folders inside that their owner
  /// may not change are made so that he may.
  std::optional<PlatformError> removeItem(const std::string& path) override;

  /// See `moveTree` for what lies where when a move between volumes is interrupted.
  std::optional<PlatformError> moveItem(const std::string& from, const std::string& to) override;

  PlatformError unknownWriteError() const override;

protected:
  /// Where an item of that name lies on this machine.
  std::string located(const std::string& path) const;

private:
  const std::string systemRoot_; ///< without a trailing slash
  const std::string homeDirectory_;
  mutable TemporaryDirectory temporaryDirectory_;
};

} // namespace driftmark
