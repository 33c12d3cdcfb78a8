#pragma once

#include "platform/FileSystem.h"

namespace driftmark {

/// The file system of this machine. Make it on the main thread.
class PosixFileSystem final : public FileSystem {
public:
  PosixFileSystem();

  /// A path that the system cannot take, such as one with a NUL in it, names nothing.
  bool fileExists(const std::string& path) const override;

  /// `HOME` as it was when this object was made; where that is not an absolute path, the folder in
  /// the user database. Empty when that folder is the root.
  std::string homeDirectory() const override { return homeDirectory_; }

private:
  const std::string homeDirectory_;
};

} // namespace driftmark
