#include "platform/posix/files/TemporaryDirectory.h"

#include "platform/posix/PosixEnvironment.h"
#include "platform/posix/files/FilePath.h"

#include <cerrno>
#include <cstdlib>

#include <sys/stat.h>
#include <unistd.h>

namespace driftmark {

namespace {

std::string parentFolder() {
  const std::string path = PosixEnvironment().variable("TMPDIR").value_or("");
  return path.starts_with('/') ? file_path::withoutTrailingSlashes(path) : "/tmp";
}

/// Makes the folder unless it is there; true when it is one that only this user can enter.
bool isPrivateFolder(const std::string& path) {
  if (mkdir(path.c_str(), S_IRWXU) != 0 && errno != EEXIST)
    return false;
  struct stat information {};
  return lstat(path.c_str(), &information) == 0 && S_ISDIR(information.st_mode) &&
         information.st_uid == geteuid() && (information.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

} // namespace

std::string TemporaryDirectory::path() {
  const std::lock_guard lock(mutex_);
  if (path_.empty())
    path_ = parentFolder() + "/driftmark-" + std::to_string(geteuid());
  if (!isPrivateFolder(path_)) {
    std::string fresh = parentFolder() + "/driftmark-" + std::to_string(geteuid()) + "-XXXXXX";
    if (mkdtemp(fresh.data()))
      path_ = fresh;
  }
  return path_ + "/";
}

} // namespace driftmark
