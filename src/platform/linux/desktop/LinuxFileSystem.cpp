#include "platform/linux/desktop/LinuxFileSystem.h"

#include "platform/linux/desktop/HomeTrash.h"
#include "platform/posix/SystemErrors.h"

namespace driftmark {

std::optional<PlatformError> LinuxFileSystem::trashItem(const std::string& path) {
  const int error = moveToHomeTrash(located(path));
  return error == 0 ? std::nullopt : std::optional(fileError(path, "moved to the trash", error));
}

} // namespace driftmark
