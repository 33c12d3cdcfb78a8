#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace driftmark {

__extension__ using WideWord = unsigned __int128;

/// A fast hash of bytes; not meant to withstand an adversary.
inline std::uint64_t hashBytes(std::string_view bytes) {
  // Odd numbers with well-spread bits: the fractions of the golden ratio and of the square roots of
  // three and of five.
  constexpr std::uint64_t first = 0x9e3779b97f4a7c15;
  constexpr std::uint64_t second = 0xbb67ae8584caa73b;
  constexpr std::uint64_t third = 0x3c6ef372fe94f82b;
  const auto load = [](const char* at) {
    std::uint64_t word = 0;
    std::memcpy(&word, at, sizeof word);
    return word;
  };
  // Every bit of the product depends on bits of both factors; the halves are folded together.
  const auto mix = [](std::uint64_t a, std::uint64_t b) {
    const WideWord product = static_cast<WideWord>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
  };

  const char* at = bytes.data();
  const std::size_t size = bytes.size();
  std::uint64_t hash = size * first;
  if (size >= 16) {
    const char* const lastBlock = at + size - 16;
    for (; at < lastBlock; at += 16)
      hash = mix(load(at) ^ second, load(at + 8) ^ hash);
    // The last sixteen bytes, some of them perhaps for the second time.
    hash = mix(load(lastBlock) ^ second, load(lastBlock + 8) ^ hash);
  } else if (size >= 8) {
    hash = mix(load(at) ^ second, load(at + size - 8) ^ hash);
  } else {
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < size; ++i)
      word = word << 8 | static_cast<unsigned char>(at[i]);
    hash = mix(word ^ second, hash);
  }
  return mix(hash ^ third, first);
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
