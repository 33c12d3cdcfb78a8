// How an item is moved to the trash, and under which name.

#include "platform/linux/desktop/LinuxAdapters.h"
#include "platform/posix/FileDescriptor.h"
#include "platform/posix/SystemErrors.h"
#include "platform/posix/files/FileItems.h"
#include "support/Paths.h"

#include <cerrno>
#include <cstddef>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace driftmark {

namespace {

QByteArray noteText(const std::string& path) {
  return "[Trash Info]\nPath=" + QByteArray::fromStdString(path).toPercentEncoding("/") +
         "\nDeletionDate=" +
         QDateTime::currentDateTime().toString("yyyy-MM-ddTHH:mm:ss").toLatin1() + "\n";
}

/// Reserves a name in the trash by the note for the item. Returns 0 or an error number.
int writeNote(const std::string& note, const std::string& path) {
  const FileDescriptor file(
      open(note.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!file.isOpen())
    return errno;
  const QByteArray text = noteText(path);
  const ssize_t written =
      write(file.number(), text.constData(), static_cast<std::size_t>(text.size()));
  if (written == text.size())
    return 0;
  const int error = written < 0 ? errno : ENOSPC;
  unlink(note.c_str());
  return error;
}

/// Moves the item into the trash under this name. Returns EEXIST when the name is taken there.
int moveAs(const std::string& name, const std::string& trash, const std::string& path) {
  const std::string note = trash + "/info/" + name + ".trashinfo";
  if (const int error = writeNote(note, path); error != 0)
    return error;
  const int error = moveTree(path, trash + "/files/" + name);
  if (error != 0)
    unlink(note.c_str());
  return error;
}

/// The user's trash; empty when it cannot be created.
std::string openTrash() {
  const QString folder =
      QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/Trash";
  if (!QDir().mkpath(folder + "/files") || !QDir().mkpath(folder + "/info"))
    return {};
  return QFile::encodeName(folder).toStdString();
}

/// Returns 0 or an error number. Qt has a function for this, but it leaves folders on other volumes
/// where they are, and without a data folder it moves items into the working directory.
int moveToTrash(const std::string& path) {
  const std::string item(withoutTrailingSlashes(path));
  struct stat information {};
  if (lstat(item.c_str(), &information) != 0)
    return errno;
  const std::string trash = openTrash();
  if (trash.empty())
    return EACCES;
  const std::string name(lastPathComponent(item));
  int error = moveAs(name, trash, item);
  for (int copy = 2; error == EEXIST; ++copy)
    error = moveAs(name + "." + std::to_string(copy), trash, item);
  return error;
}

} // namespace

std::optional<PlatformError> LinuxFileSystem::trashItem(const std::string& path) {
  const int error = moveToTrash(located(path));
  return error == 0 ? std::nullopt : std::optional(fileError(path, "moved to the trash", error));
}

} // namespace driftmark
