#pragma once

#include "platform/posix/files/PosixFileSystem.h"

namespace driftmark {

/// The file system with the desktop's trash.
class LinuxFileSystem : public PosixFileSystem {
public:
  using PosixFileSystem::PosixFileSystem;

  /// The trash is the one in the user's data folder (`XDG_DATA_HOME`), also for other volumes.
  std::optional<PlatformError> trashItem(const std::string& path) override;
};

} // namespace driftmark
