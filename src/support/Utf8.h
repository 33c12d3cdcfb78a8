#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace driftmark {

/// Whether `bytes` are well-formed UTF-8 as Unicode defines it: no overlong forms, no surrogates,
/// nothing beyond U+10FFFF. A NUL is well-formed.
bool isUtf8(std::string_view bytes);

/// `bytes` with every byte that belongs to no well-formed UTF-8 sequence replaced by U+FFFD.
std::string wellFormed(std::string_view bytes);

/// The length of the well-formed UTF-8 sequence of two to four bytes at the start of `bytes`; 0
/// when there is none.
std::size_t utf8SequenceLength(std::string_view bytes);

/// How many bytes at the start of `bytes` are ASCII.
std::size_t asciiLength(std::string_view bytes);

// Inline, since every line of a listing passes through it several times.

/// Sixteen bytes that the processor compares at once.
using Block [[gnu::vector_size(16)]] = unsigned char;

inline Block loadBlock(const char* from) {
  Block block;
  std::memcpy(&block, from, sizeof block);
  return block;
}

/// The plain length of the sixteen bytes from `from` on. Reads 17 bytes.
inline std::size_t plainLengthOfBlock(const char* from) {
  const Block here = loadBlock(from);
  const Block next = loadBlock(from + 1);
  const Block marks = (here & 0x80) | reinterpret_cast<Block>(here == '\x1b') |
                      (reinterpret_cast<Block>(here == '/') & reinterpret_cast<Block>(next == '.'));
  std::array<std::uint64_t, 2> words{};
  std::memcpy(words.data(), &marks, sizeof marks);
  const int bits = words[0] != 0 ? std::countr_zero(words[0]) : 64 + std::countr_zero(words[1]);
  return static_cast<std::size_t>(bits) / 8;
}

/// How many bytes at the start of `bytes` are ASCII, and neither the escape character nor a "/"
/// that a "." follows: what needs a closer look in a line with paths and colours.
inline std::size_t plainLength(std::string_view bytes) {
  std::size_t at = 0;
  for (; bytes.size() - at > sizeof(Block); at += sizeof(Block))
    if (const std::size_t length = plainLengthOfBlock(bytes.data() + at); length < sizeof(Block))
      return at + length;
  while (at < bytes.size() && static_cast<unsigned char>(bytes[at]) < 0x80 && bytes[at] != '\x1b' &&
         !(bytes[at] == '/' && bytes.substr(at + 1).starts_with('.')))
    ++at;
  return at;
}

} // namespace driftmark
