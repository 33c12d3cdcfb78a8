// Where the home folder and the temporary folder are, and how folders are made.

#include "platform/posix/files/PosixFileSystem.h"

#include "platform/posix/PosixAdapters.h"
#include "platform/posix/SystemErrors.h"
#include "platform/posix/files/FileItems.h"
#include "platform/posix/files/PosixMovedItem.h"
#include "platform/posix/files/SystemRootPath.h"
#include "support/Paths.h"

#include <cerrno>
#include <cstdlib>
#include <utility>
#include <vector>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace driftmark {

namespace {

/// The home folder in the user database; empty when the user has no entry.
std::string homeByDatabase() {
  std::vector<char> buffer(1024);
  passwd entry{};
  passwd* found = nullptr;
  while (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE)
    buffer.resize(buffer.size() * 2);
  return found ? found->pw_dir : "";
}

std::string home() {
  std::string path = PosixEnvironment().variable("HOME").value_or("");
  if (!path.starts_with('/'))
    path = homeByDatabase();
  path.erase(path.find_last_not_of('/') + 1);
  return path;
}

/// Whether the system can take the path at all.
bool isPath(const std::string& path) {
  return !path.empty() && path.find('\0') == std::string::npos;
}

bool isFolder(const std::string& path) {
  struct stat information {};
  return stat(path.c_str(), &information) == 0 && S_ISDIR(information.st_mode);
}

/// Returns 0 or an error number.
int makeFolder(const std::string& path) {
  if (mkdir(path.c_str(), S_IRWXU | S_IRWXG | S_IRWXO) == 0)
    return 0;
  const int error = errno;
  return error == EEXIST && isFolder(path) ? 0 : error;
}

int makeFolders(const std::string& path) {
  for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    const std::string above = path.substr(0, slash);
    if (isFolder(above))
      continue;
    if (const int error = makeFolder(above); error != 0)
      return error == EEXIST ? ENOTDIR : error;
  }
  return makeFolder(path);
}

std::string temporaryParent() {
  const std::string path = PosixEnvironment().variable("TMPDIR").value_or("");
  return path.starts_with('/') ? std::string(withoutTrailingSlashes(path)) : "/tmp";
}

/// Makes the folder unless it exists. True when it is a folder that only this user can enter.
bool makePrivateFolder(const std::string& path) {
  if (mkdir(path.c_str(), S_IRWXU) != 0 && errno != EEXIST)
    return false;
  return isPrivateFolder(path);
}

std::optional<PlatformError> outcome(const std::string& path, std::string_view done, int error) {
  return error == 0 ? std::nullopt : std::optional(fileError(path, done, error));
}

} // namespace

std::variant<std::string, PlatformError> TemporaryDirectory::path() {
  const std::lock_guard lock(mutex_);
  const std::string usual = temporaryParent() + "/driftmark-" + std::to_string(geteuid());
  if (path_.empty())
    path_ = usual;
  if (!makePrivateFolder(path_)) {
    std::string fresh = usual + "-XXXXXX";
    if (!mkdtemp(fresh.data()))
      return fileError(usual, "made", errno);
    path_ = fresh;
  }
  return path_ + "/";
}

PosixFileSystem::PosixFileSystem(std::string systemRoot)
    : systemRoot_(std::move(systemRoot)), homeDirectory_(home()) {}

bool PosixFileSystem::fileExists(const std::string& path) const {
  struct stat information {};
  return isPath(path) && stat(located(path).c_str(), &information) == 0;
}

bool PosixFileSystem::itemExists(const std::string& path) const {
  return isPath(path) && driftmark::itemExists(located(path));
}

bool PosixFileSystem::isLink(const std::string& path) const {
  return isPath(path) && driftmark::isLink(located(path));
}

bool PosixFileSystem::areSameItem(const std::string& one, const std::string& other) const {
  return isPath(one) && isPath(other) && driftmark::areSameItem(located(one), located(other));
}

std::optional<PlatformError> PosixFileSystem::createDirectory(const std::string& path) {
  const int error =
      isPath(path) ? makeFolders(std::string(withoutTrailingSlashes(located(path)))) : EINVAL;
  return outcome(path, "made", error);
}

std::optional<PlatformError> PosixFileSystem::removeItem(const std::string& path) {
  return outcome(path, "removed", isPath(path) ? removeTree(located(path)) : EINVAL);
}

std::optional<PlatformError> PosixFileSystem::moveItem(const std::string& from,
                                                       const std::string& to) {
  const bool arePaths = isPath(from) && isPath(to);
  return outcome(from, "moved", arePaths ? moveTree(located(from), located(to)) : EINVAL);
}

std::variant<std::unique_ptr<MovedItem>, PlatformError>
PosixFileSystem::moveItemReversibly(const std::string& from, const std::string& to) {
  if (!isPath(from) || !isPath(to))
    return fileError(from, "moved", EINVAL);
  return PosixMovedItem::move(located(from), located(to));
}

PlatformError PosixFileSystem::unknownWriteError() const {
  return {"The file couldn’t be saved."};
}

std::string PosixFileSystem::located(const std::string& path) const {
  return belowSystemRoot(systemRoot_, path);
}

} // namespace driftmark
