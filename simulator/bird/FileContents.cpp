// What bytes iCloud has for a path.
#include "bird/FileContents.h"

#include <algorithm>
#include <cstring>

namespace icloud {
namespace {

// FNV-1a.
std::uint64_t hashOf(std::string_view text) {
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const char c : text)
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  return hash;
}

// SplitMix64.
std::uint64_t wordAt(std::uint64_t seed, std::uint64_t index) {
  std::uint64_t word = seed + (index + 1) * 0x9e3779b97f4a7c15;
  word = (word ^ (word >> 30)) * 0xbf58476d1ce4e5b9;
  word = (word ^ (word >> 27)) * 0x94d049bb133111eb;
  return word ^ (word >> 31);
}

} // namespace

FileContents::FileContents(std::string_view path, std::uint64_t bytes)
    : seed_(hashOf(path)), size_(bytes) {}

void FileContents::read(std::uint64_t offset, std::span<char> into) const {
  std::uint64_t index = offset / sizeof(std::uint64_t);
  while (!into.empty()) {
    const std::uint64_t word = wordAt(seed_, index++);
    const std::size_t count = std::min(into.size(), sizeof word);
    std::memcpy(into.data(), &word, count);
    into = into.subspan(count);
  }
}

} // namespace icloud
