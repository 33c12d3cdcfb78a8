#include "common/DiskUsage.h"

#include "common/SystemFailure.h"

#include <sys/stat.h>

namespace icloud {
namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t blockSize = 512;

std::uint64_t bytesOfFile(const fs::path& path) {
  struct stat information {};
  if (lstat(path.c_str(), &information) != 0)
    throwSystemFailure("cannot measure " + path.string());
  return S_ISREG(information.st_mode)
             ? static_cast<std::uint64_t>(information.st_blocks) * blockSize
             : 0;
}

} // namespace

std::uint64_t bytesOnDisk(const fs::path& path) {
  std::uint64_t bytes = bytesOfFile(path);
  if (fs::is_directory(fs::symlink_status(path)))
    for (const auto& entry : fs::recursive_directory_iterator(path))
      bytes += bytesOfFile(entry.path());
  return bytes;
}

} // namespace icloud
