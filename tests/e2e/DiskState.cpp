// What a file looks like on disk in each cloud state.

#include "DiskState.h"

#include "bird/DiskFile.h"

#include <array>

#include <gtest/gtest.h>
#include <sys/xattr.h>

namespace icloud::test {

struct stat statOf(const std::filesystem::path& path) {
  struct stat result {};
  EXPECT_EQ(lstat(path.c_str(), &result), 0) << path;
  return result;
}

std::optional<std::string> stateAttribute(const std::filesystem::path& path) {
  std::array<char, 64> text{};
  const ssize_t size = getxattr(path.c_str(), DiskFile::stateAttribute, text.data(), text.size());
  if (size < 0)
    return std::nullopt;
  return std::string(text.data(), static_cast<std::size_t>(size));
}

void expectDownloaded(const std::filesystem::path& path, off_t bytes) {
  EXPECT_EQ(statOf(path).st_size, bytes) << path;
  EXPECT_GE(statOf(path).st_blocks * 512, bytes) << path;
  EXPECT_EQ(stateAttribute(path).value_or("current"), "current") << path;
}

void expectEvicted(const std::filesystem::path& path, off_t bytes) {
  EXPECT_EQ(statOf(path).st_size, bytes) << path;
  EXPECT_EQ(statOf(path).st_blocks, 0) << path;
  EXPECT_EQ(stateAttribute(path).value_or("evicted"), "evicted") << path;
}

} // namespace icloud::test
