// How an item is removed, whatever the depth and the permissions of its folders.

#include "platform/posix/FileDescriptor.h"
#include "platform/posix/files/FileItems.h"
#include "support/Paths.h"

#include <cerrno>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace driftmark {

namespace {

int openPlain(int parent, const char* name) {
  return openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

/// Opens a folder, and makes its entries removable where this user may.
FileDescriptor openFolder(int parent, const char* name) {
  FileDescriptor folder(openPlain(parent, name));
  if (!folder.isOpen() && errno == EACCES && fchmodat(parent, name, S_IRWXU, 0) == 0)
    folder = FileDescriptor(openPlain(parent, name));
  struct stat information {};
  if (folder.isOpen() && fstat(folder.number(), &information) == 0 &&
      (information.st_mode & S_IRWXU) != S_IRWXU)
    fchmod(folder.number(), (information.st_mode & ALLPERMS) | S_IRWXU);
  return folder;
}

/// Empties one folder. A folder two levels below is first lifted up beside its parent, so that any
/// depth of folders takes at most three descriptors.
class FolderRemoval {
public:
  explicit FolderRemoval(int top) : top_(top) {}

  int removeEntries() {
    std::vector<std::string> names;
    int error = listFolder(top_, names);
    while (error == 0 && !names.empty()) {
      for (const std::string& name : names)
        if (const int failure = removeEntry(name.c_str()); failure != 0)
          return failure;
      error = listFolder(top_, names);
    }
    return error;
  }

private:
  /// Whether an entry that `unlink` refused with this error may be a folder.
  static bool mayBeFolder(int error) { return error == EISDIR || error == EPERM; }

  int removeEntry(const char* name) {
    if (unlinkat(top_, name, 0) == 0)
      return 0;
    if (!mayBeFolder(errno))
      return errno;
    const FileDescriptor folder = openFolder(top_, name);
    if (!folder.isOpen())
      return errno == ENOTDIR ? EPERM : errno;
    if (const int error = removeEntriesOf(folder.number()); error != 0)
      return error;
    return unlinkat(top_, name, AT_REMOVEDIR) == 0 ? 0 : errno;
  }

  int removeEntriesOf(int folder) {
    std::vector<std::string> names;
    if (const int error = listFolder(folder, names); error != 0)
      return error;
    for (const std::string& name : names) {
      if (unlinkat(folder, name.c_str(), 0) == 0)
        continue;
      if (!mayBeFolder(errno))
        return errno;
      if (const int error = lift(folder, name.c_str()); error != 0)
        return error;
    }
    return 0;
  }

  int lift(int folder, const char* name) {
    if (!openFolder(folder, name).isOpen())
      return errno == ENOTDIR ? EPERM : errno;
    int error = EEXIST;
    while (error == EEXIST) {
      const std::string lifted = "lifted-" + std::to_string(lifts_++);
      error = renameExclusively(folder, name, top_, lifted.c_str());
    }
    return error;
  }

  const int top_;
  unsigned lifts_ = 0;
};

} // namespace

int removeTree(const std::string& path) {
  const std::string item(withoutTrailingSlashes(path));
  struct stat information {};
  if (lstat(item.c_str(), &information) != 0)
    return errno;
  if (!S_ISDIR(information.st_mode))
    return unlink(item.c_str()) == 0 ? 0 : errno;

  if (faccessat(AT_FDCWD, deletingLastPathComponent(item).c_str(), W_OK | X_OK, AT_EACCESS) != 0)
    return errno;
  const FileDescriptor folder = openFolder(AT_FDCWD, item.c_str());
  if (!folder.isOpen())
    return errno;
  if (const int error = FolderRemoval(folder.number()).removeEntries(); error != 0)
    return error;
  return rmdir(item.c_str()) == 0 ? 0 : errno;
}

} // namespace driftmark
