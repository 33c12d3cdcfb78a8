#include "platform/posix/files/ItemMove.h"

#include "platform/posix/FileDescriptor.h"
#include "platform/posix/files/FileCalls.h"
#include "platform/posix/files/FilePath.h"
#include "platform/posix/files/ItemCopy.h"
#include "platform/posix/files/ItemRemoval.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace driftmark {

namespace {

bool isThere(const std::string& path) {
  struct stat information {};
  return lstat(path.c_str(), &information) == 0;
}

int renameTree(const std::string& from, const std::string& to) {
  return file_calls::renameExclusively(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str());
}

/// Brings a new name in a folder to the disk. A folder that cannot be opened for that is none of
/// the mover's troubles.
void flushFolder(const std::string& path) {
  const FileDescriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.isOpen())
    file_calls::flush(folder.number());
}

/// Makes a whole copy appear at `to` at once.
int placeCopy(const std::string& from, const std::string& to, const std::string& hidden) {
  if (isThere(to))
    return EEXIST;
  int error = copyTree(from, hidden);
  if (error == 0)
    error = renameTree(hidden, to);
  if (error != 0)
    removeTree(hidden);
  return error;
}

int moveBetweenVolumes(const std::string& from, const std::string& to) {
  const std::string incoming = file_path::hiddenSibling(to);
  if (const int error = placeCopy(from, to, incoming); error != 0)
    return error;
  flushFolder(file_path::parent(to));

  const std::string outgoing = file_path::hiddenSibling(from);
  const int error = renameTree(from, outgoing);
  if (error == 0)
    removeTree(outgoing);
  else if (renameTree(to, incoming) == 0)
    removeTree(incoming);
  return error;
}

} // namespace

int moveTree(const std::string& from, const std::string& to) {
  const std::string source = file_path::withoutTrailingSlashes(from);
  const std::string target = file_path::withoutTrailingSlashes(to);
  const int error = renameTree(source, target);
  return error == EXDEV ? moveBetweenVolumes(source, target) : error;
}

bool areOnTwoVolumes(const std::string& one, const std::string& other) {
  struct stat first {};
  struct stat second {};
  return stat(file_path::parent(one).c_str(), &first) == 0 &&
         stat(file_path::parent(other).c_str(), &second) == 0 && first.st_dev != second.st_dev;
}

} // namespace driftmark
