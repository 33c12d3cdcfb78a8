#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace driftmark {

/// A fast hash of bytes; not meant to withstand an adversary.
inline std::uint64_t hashBytes(std::string_view bytes) {
  // Odd multipliers with well-spread bits: the fractions of the golden ratio and of the square root
  // of three.
  constexpr std::uint64_t first = 0x9e3779b97f4a7c15;
  constexpr std::uint64_t second = 0xbb67ae8584caa73b;
  const auto load = [](const char* at, std::size_t count) {
    std::uint64_t word = 0;
    std::memcpy(&word, at, count);
    return word;
  };

  // Two independent lanes keep the multiplier busy.
  std::uint64_t a = bytes.size() * first;
  std::uint64_t b = second;
  const char* at = bytes.data();
  std::size_t left = bytes.size();
  for (; left >= 16; at += 16, left -= 16) {
    a = (a ^ load(at, 8)) * first;
    b = (b ^ load(at + 8, 8)) * second;
    a ^= a >> 29;
    b ^= b >> 31;
  }
  if (left >= 8) {
    a = (a ^ load(at, 8)) * first;
    a ^= a >> 29;
    at += 8;
    left -= 8;
  }
  if (left > 0)
    b = (b ^ load(at, left)) * second;

  std::uint64_t hash = (a ^ (b >> 32) ^ (b << 32)) * first;
  hash ^= hash >> 32;
  hash *= second;
  return hash ^ (hash >> 29);
}

/// A path with its hash, for several look-ups at the price of one hash.
struct HashedPath {
  explicit HashedPath(std::string_view of) : path(of), hash(hashBytes(of)) {}

  std::string_view path; ///< not owned
  std::uint64_t hash;

  friend bool operator==(const HashedPath& a, std::string_view b) { return a.path == b; }
};

/// Hashes paths for containers that are searched by `std::string_view` and `HashedPath` too.
struct PathHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view path) const {
    return static_cast<std::size_t>(hashBytes(path));
  }
  std::size_t operator()(const HashedPath& path) const {
    return static_cast<std::size_t>(path.hash);
  }
};

} // namespace driftmark
