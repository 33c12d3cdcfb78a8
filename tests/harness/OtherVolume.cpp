// Where tests find a second volume.

#include "harness/OtherVolume.h"

#include <sys/stat.h>
#include <unistd.h>

namespace driftmark::test {

namespace {

dev_t volumeOf(const std::filesystem::path& path) {
  struct stat information {};
  return stat(path.c_str(), &information) == 0 ? information.st_dev : 0;
}

} // namespace

OtherVolume::OtherVolume() {
  const dev_t here = volumeOf(std::filesystem::temp_directory_path());
  for (const char* const candidate : {"/dev/shm", "/var/tmp", "/tmp", "/run"}) {
    if (volumeOf(candidate) != here && access(candidate, W_OK) == 0) {
      folder_.emplace(candidate);
      return;
    }
  }
}

} // namespace driftmark::test
