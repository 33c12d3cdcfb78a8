#pragma once

#include "platform/posix/files/PosixFileSystem.h"

namespace driftmark {

/// The file system with the desktop's trash.
class LinuxFileSystem : public PosixFileSystem {
public:
  using PosixFileSystem::PosixFileSystem;

  /// Moves the item to the trash in the user's data folder (`XDG_DATA_HOME`), from other volumes
  /// too. The desktops share its layout; the note beside the item lets them put it back.
  std::optional<PlatformError> trashItem(const std::string& path) override;
};

} // namespace driftmark
