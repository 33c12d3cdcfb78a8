// How a file of the drive gains and loses blocks on disk.
#include "bird/DiskFile.h"

#include "common/Descriptor.h"
#include "common/SystemFailure.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace icloud {
namespace {

constexpr std::size_t chunkSize = 65536;
using Chunk = std::array<char, chunkSize>;

Descriptor openFile(const std::filesystem::path& path, int flags) {
  Descriptor opened(open(path.c_str(), O_CLOEXEC | O_NOFOLLOW | flags, 0644));
  if (!opened)
    throwSystemFailure("cannot open " + path.string());
  return opened;
}

struct stat statusOf(const Descriptor& file, const std::filesystem::path& path) {
  struct stat status {};
  if (fstat(file.get(), &status) != 0)
    throwSystemFailure("cannot examine " + path.string());
  return status;
}

void setSize(const Descriptor& file, const std::filesystem::path& path, std::uint64_t bytes) {
  if (ftruncate(file.get(), static_cast<off_t>(bytes)) != 0)
    throwSystemFailure("cannot size " + path.string());
}

std::span<char> part(Chunk& chunk, std::uint64_t offset, std::uint64_t end) {
  return {chunk.data(), static_cast<std::size_t>(std::min<std::uint64_t>(end - offset, chunkSize))};
}

void write(const Descriptor& file, const std::filesystem::path& path, const FileContents& contents,
           std::uint64_t begin, std::uint64_t end) {
  Chunk chunk;
  for (std::uint64_t offset = begin / chunkSize * chunkSize; offset < end; offset += chunkSize) {
    std::span<char> left = part(chunk, offset, end);
    contents.read(offset, left);
    for (std::uint64_t at = offset; !left.empty();) {
      const ssize_t count = pwrite(file.get(), left.data(), left.size(), static_cast<off_t>(at));
      if (count < 0)
        throwSystemFailure("cannot fill " + path.string());
      left = left.subspan(static_cast<std::size_t>(count));
      at += static_cast<std::uint64_t>(count);
    }
  }
}

/// How the bytes of a file may differ from those in iCloud.
enum class Tolerance { none, zeros };

bool holds(const Descriptor& file, const std::filesystem::path& path, const FileContents& contents,
           Tolerance tolerance = Tolerance::none) {
  const struct stat status = statusOf(file, path);
  if (!S_ISREG(status.st_mode) || static_cast<std::uint64_t>(status.st_size) != contents.size())
    return false;
  Chunk here;
  Chunk there;
  const auto fits = [&](char actual, char expected) {
    return actual == expected || (tolerance == Tolerance::zeros && actual == 0);
  };
  for (std::uint64_t offset = 0; offset < contents.size();) {
    const auto expected = part(there, offset, contents.size());
    contents.read(offset, expected);
    const ssize_t count =
        pread(file.get(), here.data(), expected.size(), static_cast<off_t>(offset));
    if (count < 0)
      throwSystemFailure("cannot read " + path.string());
    if (static_cast<std::size_t>(count) != expected.size() ||
        !std::equal(expected.begin(), expected.end(), here.begin(),
                    [&](char wanted, char actual) { return fits(actual, wanted); }))
      return false;
    offset += expected.size();
  }
  return true;
}

/// Restores the times that a file had before it was changed.
void restoreTimes(const Descriptor& file, const struct stat& before) {
  const std::array<timespec, 2> times{before.st_atim, before.st_mtim};
  futimens(file.get(), times.data());
}

// Only a hole that ends behind the last block frees that block.
void punch(const Descriptor& file, const std::filesystem::path& path, std::uint64_t bytes) {
  if (bytes == 0)
    return;
  constexpr std::uint64_t beyond = 0xfffff;
  if (fallocate(file.get(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 0,
                static_cast<off_t>(bytes | beyond) + 1) != 0) {
    if (errno != EOPNOTSUPP)
      throwSystemFailure("cannot empty " + path.string());
    setSize(file, path, 0);
    setSize(file, path, bytes);
  }
}

// Refuses a file that another process has open. A process that opens it later waits until this
// descriptor is closed. Does nothing where the system or this user has no such leases.
void lockOut(const Descriptor& file) {
  if (fcntl(file.get(), F_SETLEASE, F_WRLCK) != 0 && errno == EAGAIN)
    throw Refusal(Refusal::inUse);
}

bool hasData(const Descriptor& file) {
  return lseek(file.get(), 0, SEEK_DATA) >= 0;
}

/// Returns 0, or the error number.
int tryToNote(const std::filesystem::path& path, const char* state) {
  const bool isNoted =
      lsetxattr(path.c_str(), DiskFile::stateAttribute, state, std::strlen(state), 0) == 0;
  return isNoted ? 0 : errno;
}

} // namespace

void DiskFile::createWithContents(const FileContents& contents) const {
  write(openFile(path_, O_WRONLY | O_CREAT | O_EXCL), path_, contents, 0, contents.size());
}

void DiskFile::createEmptied(std::uint64_t bytes) const {
  setSize(openFile(path_, O_WRONLY | O_CREAT | O_EXCL), path_, bytes);
}

void DiskFile::fetch(const FileContents& contents, std::uint64_t before,
                     std::uint64_t present) const {
  const Descriptor file = openFile(path_, O_WRONLY);
  const struct stat times = statusOf(file, path_);
  write(file, path_, contents, before, present);
  restoreTimes(file, times);
}

void DiskFile::dropContents(std::uint64_t bytes) const {
  const Descriptor file = openFile(path_, O_WRONLY);
  const struct stat before = statusOf(file, path_);
  punch(file, path_, bytes);
  restoreTimes(file, before);
}

void DiskFile::evict(const FileContents& contents) const {
  const Descriptor file = openFile(path_, O_RDWR);
  lockOut(file);
  const struct stat before = statusOf(file, path_);
  if (!holds(file, path_, contents))
    throw Refusal(Refusal::stillUploading);
  if (const int problem = tryToNote(path_, evictedState); problem != 0 && problem != ENOTSUP)
    throwSystemFailure("cannot note the state of " + path_.string(), problem);
  try {
    punch(file, path_, contents.size());
  } catch (const std::system_error&) {
    tryToNote(path_, currentState);
    throw;
  }
  restoreTimes(file, before);
}

void DiskFile::checkEmptied() const {
  const Descriptor file = openFile(path_, O_WRONLY);
  if (hasData(file))
    throw Refusal(Refusal::stillUploading);
}

void DiskFile::finishEviction(const FileContents& contents) const {
  const Descriptor file = openFile(path_, O_RDWR);
  if (!hasData(file) || !holds(file, path_, contents, Tolerance::zeros))
    return;
  const struct stat before = statusOf(file, path_);
  punch(file, path_, contents.size());
  restoreTimes(file, before);
}

bool DiskFile::exists() const {
  struct stat status {};
  return lstat(path_.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

std::uint64_t DiskFile::present(std::uint64_t bytes) const {
  const Descriptor file(open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  const off_t hole = file ? lseek(file.get(), 0, SEEK_HOLE) : -1;
  if (hole < 0 || hole >= statusOf(file, path_).st_size)
    return bytes;
  return std::min(bytes, static_cast<std::uint64_t>(hole));
}

void DiskFile::lock() const {
  if (chmod(path_.c_str(), 0444) != 0)
    throwSystemFailure("cannot lock " + path_.string());
}

void DiskFile::remove() const {
  if (unlink(path_.c_str()) != 0)
    throwSystemFailure("cannot delete " + path_.string());
}

void DiskFile::note(const char* state) const {
  const int problem = tryToNote(path_, state);
  if (problem != 0 && problem != ENOTSUP && problem != EPERM && problem != ENOSPC)
    throwSystemFailure("cannot note the state of " + path_.string(), problem);
}

std::string DiskFile::noted() const {
  std::array<char, 32> state{};
  const ssize_t size = lgetxattr(path_.c_str(), stateAttribute, state.data(), state.size());
  return size < 0 ? std::string() : std::string(state.data(), static_cast<std::size_t>(size));
}

} // namespace icloud
