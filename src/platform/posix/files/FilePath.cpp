#include "platform/posix/files/FilePath.h"

#include <algorithm>
#include <cstddef>
#include <random>
#include <string_view>

namespace driftmark::file_path {

namespace {

/// Leaves room for what is added to a name, within the 255 bytes that file systems allow.
constexpr std::size_t longestKeptName = 200;

std::string randomDigits() {
  constexpr std::string_view digits = "0123456789abcdef";
  std::random_device source;
  std::string text;
  for (int i = 0; i < 16; ++i)
    text += digits[source() % digits.size()];
  return text;
}

} // namespace

std::string withoutTrailingSlashes(std::string path) {
  const std::size_t last = path.find_last_not_of('/');
  path.erase(std::min(path.size(), last == std::string::npos ? 1 : last + 1));
  return path;
}

std::string name(const std::string& path) {
  const std::string item = withoutTrailingSlashes(path);
  return item == "/" ? item : item.substr(item.rfind('/') + 1);
}

std::string parent(const std::string& path) {
  const std::string item = withoutTrailingSlashes(path);
  const std::size_t slash = item.rfind('/');
  return slash == std::string::npos ? "." : withoutTrailingSlashes(item.substr(0, slash + 1));
}

std::string hiddenSibling(const std::string& path) {
  const std::string folder = parent(path);
  return std::string(folder == "/" ? "" : folder)
      .append("/.")
      .append(name(path).substr(0, longestKeptName))
      .append("-")
      .append(randomDigits());
}

} // namespace driftmark::file_path
