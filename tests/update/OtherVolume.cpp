#include "update/OtherVolume.h"

#include <sys/stat.h>

namespace driftmark::road {
namespace fs = std::filesystem;

namespace {

dev_t volumeOf(const fs::path& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_dev : 0;
}

} // namespace

std::unique_ptr<icloud::test::TemporaryFolder> folderOnAnotherVolume(const fs::path& path) {
  for (const char* candidate : {"/dev/shm", "/var/tmp", "/tmp"}) {
    std::error_code missing;
    if (fs::is_directory(candidate, missing) && volumeOf(candidate) != volumeOf(path))
      return std::make_unique<icloud::test::TemporaryFolder>(candidate);
  }
  return nullptr;
}

} // namespace driftmark::road
