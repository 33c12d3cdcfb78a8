// How a tree is copied with its metadata.
#include "common/Descriptor.h"
#include "common/SystemFailure.h"
#include "ditto/Ditto.h"

#include <array>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace icloud {
namespace fs = std::filesystem;

namespace {

constexpr mode_t permissionBits = 07777;
constexpr mode_t ownerPermissions = 0700;
constexpr std::string_view keptAttributes = "user.";

struct stat statusOf(const fs::path& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0)
    throwSystemFailure(path.string());
  return status;
}

std::vector<std::string> attributesOf(const fs::path& path) {
  std::string names(65536, '\0');
  const ssize_t size = llistxattr(path.c_str(), names.data(), names.size());
  std::vector<std::string> found;
  for (std::size_t at = 0; size > 0 && at < static_cast<std::size_t>(size);) {
    const std::string name = names.c_str() + at;
    if (name.starts_with(keptAttributes))
      found.push_back(name);
    at += name.size() + 1;
  }
  return found;
}

// On a file system without attributes they are lost.
void copyAttributes(const fs::path& from, const fs::path& to) {
  for (const std::string& name : attributesOf(from)) {
    std::string value(65536, '\0');
    const ssize_t size = lgetxattr(from.c_str(), name.c_str(), value.data(), value.size());
    if (size < 0)
      throwSystemFailure(from.string());
    if (lsetxattr(to.c_str(), name.c_str(), value.data(), static_cast<std::size_t>(size), 0) != 0 &&
        errno != ENOTSUP)
      throwSystemFailure(to.string());
  }
}

void copyTimes(const struct stat& from, const fs::path& to) {
  const std::array<timespec, 2> times{from.st_atim, from.st_mtim};
  if (utimensat(AT_FDCWD, to.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) != 0)
    throwSystemFailure(to.string());
}

void removeExisting(const fs::path& target) {
  struct stat existing {};
  if (lstat(target.c_str(), &existing) != 0)
    return;
  if (S_ISDIR(existing.st_mode))
    throwSystemFailure(target.string(), EISDIR);
  if (unlink(target.c_str()) != 0)
    throwSystemFailure(target.string());
}

void writeAll(const Descriptor& file, const char* bytes, ssize_t count, const fs::path& path) {
  while (count > 0) {
    const ssize_t written = write(file.get(), bytes, static_cast<std::size_t>(count));
    if (written < 0)
      throwSystemFailure(path.string());
    bytes += written;
    count -= written;
  }
}

void copyFile(const fs::path& source, const fs::path& target) {
  removeExisting(target);
  const Descriptor from(open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  if (!from)
    throwSystemFailure(source.string());
  const Descriptor to(open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!to)
    throwSystemFailure(target.string());
  std::array<char, 65536> bytes;
  ssize_t count = 0;
  while ((count = read(from.get(), bytes.data(), bytes.size())) > 0)
    writeAll(to, bytes.data(), count, target);
  if (count < 0)
    throwSystemFailure(source.string());
}

void copyLink(const fs::path& source, const fs::path& target) {
  removeExisting(target);
  if (symlink(fs::read_symlink(source).c_str(), target.c_str()) != 0)
    throwSystemFailure(target.string());
}

void makeFolder(const fs::path& target, mode_t mode) {
  if (mkdir(target.c_str(), mode | ownerPermissions) == 0)
    return;
  const int problem = errno;
  if (problem != EEXIST || !fs::is_directory(fs::symlink_status(target)))
    throwSystemFailure(target.string(), problem == EEXIST ? ENOTDIR : problem);
}

void copyItem(const fs::path& source, const fs::path& target);

void copyFolder(const fs::path& source, const fs::path& target, mode_t mode) {
  std::vector<fs::path> contents;
  for (const auto& entry : fs::directory_iterator(source))
    contents.push_back(entry.path());
  makeFolder(target, mode);
  for (const fs::path& each : contents)
    copyItem(each, target / each.filename());
}

void copyItem(const fs::path& source, const fs::path& target) {
  const struct stat status = statusOf(source);
  if (S_ISDIR(status.st_mode))
    copyFolder(source, target, status.st_mode & permissionBits);
  else if (S_ISREG(status.st_mode))
    copyFile(source, target);
  else if (S_ISLNK(status.st_mode))
    copyLink(source, target);
  else
    throw std::runtime_error(source.string() + ": neither a file nor a folder nor a symbolic link");
  if (!S_ISLNK(status.st_mode)) {
    copyAttributes(source, target);
    if (chmod(target.c_str(), status.st_mode & permissionBits) != 0)
      throwSystemFailure(target.string());
  }
  copyTimes(status, target);
}

bool liesIn(const fs::path& target, const fs::path& folder) {
  const std::string outer = fs::canonical(folder).string() + "/";
  return fs::weakly_canonical(target).string().starts_with(outer);
}

} // namespace

void copyTree(const fs::path& source, const fs::path& target) {
  std::error_code missing;
  const fs::path real = fs::canonical(source, missing);
  if (missing)
    throw std::runtime_error("Cannot get the real path for source '" + source.string() + "'");
  if (fs::is_directory(real)) {
    if (liesIn(target, real))
      throw std::runtime_error(target.string() + ": lies in the folder that is to be copied");
    const fs::path place = target.has_filename() ? target : target.parent_path();
    fs::create_directories(place.parent_path().empty() ? fs::path(".") : place.parent_path());
    copyItem(real, fs::is_directory(place) ? fs::canonical(place) : place);
  } else {
    copyItem(real, fs::is_directory(target) ? target / source.filename() : target);
  }
}

} // namespace icloud
