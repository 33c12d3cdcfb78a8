#include "OtherVolume.h"

#include <string>
#include <system_error>

#include <stdlib.h>
#include <sys/stat.h>

namespace driftmark::test {

namespace {

dev_t volumeOf(const std::string& path) {
  struct stat information {};
  return stat(path.c_str(), &information) == 0 ? information.st_dev : 0;
}

} // namespace

OtherVolume::OtherVolume() {
  const std::string here = std::filesystem::temp_directory_path();
  for (const std::string candidate : {"/dev/shm", "/var/tmp", "/run"}) {
    std::string folder = candidate + "/driftmark-test-XXXXXX";
    if (volumeOf(candidate) != volumeOf(here) && mkdtemp(folder.data())) {
      path_ = folder;
      return;
    }
  }
}

OtherVolume::~OtherVolume() {
  std::error_code error;
  if (exists())
    std::filesystem::remove_all(path_, error);
}

} // namespace driftmark::test
