// How an item is copied, with everything that belongs to it.

#include "platform/posix/FileDescriptor.h"
#include "platform/posix/files/FileItems.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace driftmark {

namespace {

/// An item: its name in an open folder.
struct Place {
  int folder = AT_FDCWD;
  const char* name = "";
};

int copyItem(Place from, Place to);

int copyMetadata(int from, int to, const struct stat& information) {
  if (const int error = copyAttributes(from, to); error != 0)
    return error;
  mode_t mode = information.st_mode & ALLPERMS;
  // A program that runs as its owner must not run as another user.
  if (fchown(to, information.st_uid, information.st_gid) != 0)
    mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
  if (fchmod(to, mode) != 0 || futimens(to, accessAndChangeTimes(information).data()) != 0)
    return errno;
  return flushToDisk(to);
}

int copyBytes(int from, int to) {
  std::array<char, 65536> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by read
  for (;;) {
    const ssize_t count = read(from, buffer.data(), buffer.size());
    if (count == 0)
      return 0;
    if (count < 0 && errno != EINTR)
      return errno;
    if (count > 0) {
      const std::string_view bytes(buffer.data(), static_cast<std::size_t>(count));
      if (const int error = writeAll(to, bytes); error != 0)
        return error;
    }
  }
}

int copyFile(Place from, Place to, const struct stat& information) {
  const FileDescriptor source(openat(from.folder, from.name, O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  if (!source.isOpen())
    return errno;
  const FileDescriptor target(
      openat(to.folder, to.name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!target.isOpen())
    return errno;
  if (const int error = copyBytes(source.number(), target.number()); error != 0)
    return error;
  return copyMetadata(source.number(), target.number(), information);
}

int copyLink(Place from, Place to, const struct stat& information) {
  std::vector<char> text(PATH_MAX);
  const ssize_t count = readlinkat(from.folder, from.name, text.data(), text.size() - 1);
  if (count < 0)
    return errno;
  if (symlinkat(text.data(), to.folder, to.name) != 0)
    return errno;
  // The owner of a link has no effect.
  [[maybe_unused]] const int owned =
      fchownat(to.folder, to.name, information.st_uid, information.st_gid, AT_SYMLINK_NOFOLLOW);
  const auto times = accessAndChangeTimes(information);
  return utimensat(to.folder, to.name, times.data(), AT_SYMLINK_NOFOLLOW) == 0 ? 0 : errno;
}

FileDescriptor openFolder(Place place) {
  return FileDescriptor(
      openat(place.folder, place.name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

// NOLINTNEXTLINE(misc-no-recursion): the descriptors run out long before the stack
int copyFolder(Place from, Place to, const struct stat& information) {
  const FileDescriptor source = openFolder(from);
  if (!source.isOpen() || mkdirat(to.folder, to.name, S_IRWXU) != 0)
    return errno;
  const FileDescriptor target = openFolder(to);
  if (!target.isOpen())
    return errno;
  std::vector<std::string> names;
  if (const int error = listFolder(source.number(), names); error != 0)
    return error;
  for (const std::string& name : names) {
    const int error = copyItem({source.number(), name.c_str()}, {target.number(), name.c_str()});
    if (error != 0)
      return error;
  }
  return copyMetadata(source.number(), target.number(), information);
}

// NOLINTNEXTLINE(misc-no-recursion): the descriptors run out long before the stack
int copyItem(Place from, Place to) {
  struct stat information {};
  if (fstatat(from.folder, from.name, &information, AT_SYMLINK_NOFOLLOW) != 0)
    return errno;
  switch (information.st_mode & S_IFMT) {
  case S_IFREG:
    return copyFile(from, to, information);
  case S_IFLNK:
    return copyLink(from, to, information);
  case S_IFDIR:
    return copyFolder(from, to, information);
  default:
    return ENOTSUP;
  }
}

} // namespace

int copyTree(const std::string& from, const std::string& to) {
  return copyItem({AT_FDCWD, from.c_str()}, {AT_FDCWD, to.c_str()});
}

} // namespace driftmark
