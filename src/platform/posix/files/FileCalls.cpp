// The file calls that differ between Linux and macOS, and those that take several steps.

#include "platform/posix/files/FileItems.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#ifdef __APPLE__
#include <copyfile.h>
#else
#include <sys/xattr.h>
#endif

namespace driftmark {

namespace {

int result(int status) {
  return status == 0 ? 0 : errno;
}

/// For volumes without exclusive renaming. Another process may take the name between the two calls.
int renameAfterCheck(int fromFolder, const char* from, int toFolder, const char* to) {
  struct stat information {};
  if (fstatat(toFolder, to, &information, AT_SYMLINK_NOFOLLOW) == 0)
    return EEXIST;
  return result(renameat(fromFolder, from, toFolder, to));
}

/// Whether the error says that the volume or the system does not support an attribute.
bool isRefused(int error) {
  return error == ENOTSUP || error == EPERM || error == EACCES;
}

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};

} // namespace

int renameExclusively(int fromFolder, const char* from, int toFolder, const char* to) {
#ifdef __APPLE__
  const int error = result(renameatx_np(fromFolder, from, toFolder, to, RENAME_EXCL));
#else
  const int error = result(renameat2(fromFolder, from, toFolder, to, RENAME_NOREPLACE));
#endif
  if (error == EINVAL || error == ENOSYS || error == ENOTSUP)
    return renameAfterCheck(fromFolder, from, toFolder, to);
  return error;
}

bool itemExists(const std::string& path) {
  struct stat information {};
  return lstat(path.c_str(), &information) == 0;
}

bool isLink(const std::string& path) {
  struct stat information {};
  return lstat(path.c_str(), &information) == 0 && S_ISLNK(information.st_mode);
}

bool areSameItem(const std::string& one, const std::string& other) {
  struct stat first {};
  struct stat second {};
  return stat(one.c_str(), &first) == 0 && stat(other.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

bool isPrivateFolder(const std::string& path) {
  struct stat information {};
  return lstat(path.c_str(), &information) == 0 && S_ISDIR(information.st_mode) &&
         information.st_uid == geteuid() && (information.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

int writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(file, bytes.data(), bytes.size());
    if (count >= 0)
      bytes.remove_prefix(static_cast<std::size_t>(count));
    else if (errno != EINTR)
      return errno;
  }
  return 0;
}

int listFolder(int folder, std::vector<std::string>& names) {
  // A separate descriptor, so that every listing starts at the beginning.
  const int separate = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (separate < 0)
    return errno;
  const std::unique_ptr<DIR, CloseFolder> listing(fdopendir(separate));
  if (!listing) {
    const int error = errno;
    close(separate);
    return error;
  }
  names.clear();
  errno = 0;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread uses this listing
  while (const dirent* const entry = readdir(listing.get())) {
    const std::string_view name = static_cast<const char*>(entry->d_name);
    if (name != "." && name != "..")
      names.emplace_back(name);
  }
  return errno;
}

#ifdef __APPLE__

std::array<timespec, 2> accessAndChangeTimes(const struct stat& information) {
  return {information.st_atimespec, information.st_mtimespec};
}

int flushToDisk(int item) {
  // `fsync` stops at the disk's cache. Not every volume supports the other call.
  return fcntl(item, F_FULLFSYNC) == 0 ? 0 : result(fsync(item));
}

int copyAttributes(int from, int to) {
  const int error = result(fcopyfile(from, to, nullptr, COPYFILE_XATTR | COPYFILE_ACL));
  return isRefused(error) ? 0 : error;
}

#else

namespace {

int copyAttribute(int from, int to, const char* name) {
  const ssize_t size = fgetxattr(from, name, nullptr, 0);
  if (size < 0)
    return errno == ENODATA ? 0 : errno;
  std::vector<char> value(static_cast<std::size_t>(size));
  const ssize_t count = fgetxattr(from, name, value.data(), value.size());
  if (count < 0)
    return errno == ENODATA ? 0 : errno;
  return result(fsetxattr(to, name, value.data(), static_cast<std::size_t>(count), 0));
}

} // namespace

std::array<timespec, 2> accessAndChangeTimes(const struct stat& information) {
  return {information.st_atim, information.st_mtim};
}

int flushToDisk(int item) {
  return result(fsync(item));
}

int copyAttributes(int from, int to) {
  const ssize_t size = flistxattr(from, nullptr, 0);
  if (size <= 0)
    return size == 0 || isRefused(errno) ? 0 : errno;
  std::vector<char> names(static_cast<std::size_t>(size) + 1);
  const ssize_t count = flistxattr(from, names.data(), static_cast<std::size_t>(size));
  if (count < 0)
    return errno;
  const char* const end = names.data() + count;
  for (const char* name = names.data(); name < end; name += std::string_view(name).size() + 1) {
    const int error = copyAttribute(from, to, name);
    if (error != 0 && !isRefused(error))
      return error;
  }
  return 0;
}

#endif

} // namespace driftmark
