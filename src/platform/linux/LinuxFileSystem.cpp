#include "platform/linux/LinuxFileSystem.h"

#include "platform/linux/HomeTrash.h"
#include "platform/posix/FileError.h"

#include <QFile>

namespace driftmark {

std::optional<PlatformError> LinuxFileSystem::trashItem(const std::string& path) {
  const std::string item = located(path);
  if (QFile::moveToTrash(QFile::decodeName(item.c_str())))
    return std::nullopt;
  // Qt moves neither folders between volumes nor links that lead nowhere.
  const int error = moveToHomeTrash(item);
  return error == 0 ? std::nullopt : std::optional(fileError(path, "moved to the trash", error));
}

} // namespace driftmark
