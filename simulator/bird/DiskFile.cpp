#include "bird/DiskFile.h"

#include "common/Descriptor.h"
#include "common/SystemFailure.h"

#include <cstring>

#include <fcntl.h>
#include <sys/xattr.h>

namespace icloud {
namespace {

Descriptor openFile(const std::filesystem::path& path, int flags) {
  Descriptor opened(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW | flags, 0644));
  if (!opened)
    throwSystemFailure("cannot open " + path.string());
  return opened;
}

void setSize(const Descriptor& file, const std::filesystem::path& path, std::uint64_t bytes) {
  if (ftruncate(file.get(), static_cast<off_t>(bytes)) != 0)
    throwSystemFailure("cannot size " + path.string());
}

void takeBlocks(const Descriptor& file, const std::filesystem::path& path, std::uint64_t bytes) {
  if (bytes == 0)
    return;
  if (const int problem = posix_fallocate(file.get(), 0, static_cast<off_t>(bytes)))
    throwSystemFailure("cannot fill " + path.string(), problem);
}

} // namespace

void DiskFile::createWithContents(std::uint64_t bytes) const {
  if (recalled_)
    return;
  takeBlocks(openFile(path_, O_CREAT | O_EXCL), path_, bytes);
}

void DiskFile::createEmptied(std::uint64_t bytes) const {
  if (recalled_)
    return;
  setSize(openFile(path_, O_CREAT | O_EXCL), path_, bytes);
}

void DiskFile::fetch(std::uint64_t present) const {
  if (recalled_)
    return;
  takeBlocks(openFile(path_, 0), path_, present);
}

void DiskFile::dropContents(std::uint64_t bytes) const {
  if (recalled_)
    return;
  const Descriptor file = openFile(path_, 0);
  setSize(file, path_, 0);
  setSize(file, path_, bytes);
}

void DiskFile::remove() const {
  if (recalled_)
    return;
  if (unlink(path_.c_str()) != 0)
    throwSystemFailure("cannot delete " + path_.string());
}

void DiskFile::note(const char* state) const {
  if (recalled_)
    return;
  if (setxattr(path_.c_str(), stateAttribute, state, std::strlen(state), 0) == 0)
    return;
  if (errno != ENOTSUP && errno != EPERM && errno != ENOSPC)
    throwSystemFailure("cannot note the state of " + path_.string());
}

} // namespace icloud
