#include "platform/posix/files/PosixFileSystem.h"

#include "platform/posix/PosixEnvironment.h"
#include "platform/posix/files/FileError.h"
#include "platform/posix/files/FilePath.h"
#include "platform/posix/files/ItemMove.h"
#include "platform/posix/files/ItemRemoval.h"
#include "platform/posix/files/SystemRootPath.h"

#include <cerrno>
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

/// 0 or an error number.
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

std::optional<PlatformError> outcome(const std::string& path, std::string_view done, int error) {
  return error == 0 ? std::nullopt : std::optional(fileError(path, done, error));
}

} // namespace

PosixFileSystem::PosixFileSystem(std::string systemRoot)
    : systemRoot_(std::move(systemRoot)), homeDirectory_(home()) {}

bool PosixFileSystem::fileExists(const std::string& path) const {
  struct stat information {};
  return isPath(path) && stat(located(path).c_str(), &information) == 0;
}

std::optional<PlatformError> PosixFileSystem::createDirectory(const std::string& path) {
  const int error =
      isPath(path) ? makeFolders(file_path::withoutTrailingSlashes(located(path))) : EINVAL;
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

PlatformError PosixFileSystem::unknownWriteError() const {
  return {"The file couldn’t be saved."};
}

std::string PosixFileSystem::located(const std::string& path) const {
  return system_root_path::located(systemRoot_, path);
}

} // namespace driftmark
