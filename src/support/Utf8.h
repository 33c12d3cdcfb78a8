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

/// The longest start of `text` that has at most `maxSize` bytes and does not end within a
/// character.
std::string_view wholeCharacters(std::string_view text, std::size_t maxSize);

/// How many bytes at the start of `bytes` are ASCII.
std::size_t asciiLength(std::string_view bytes);

// Inline, since every line of a listing passes through it several times.

/// The length of the well-formed UTF-8 sequence of two to four bytes at the start of `bytes`; 0
/// when there is none.
inline std::size_t utf8SequenceLength(std::string_view bytes) {
  const auto at = [&](std::size_t index) { return static_cast<unsigned char>(bytes[index]); };
  const auto continues = [&](std::size_t index) { return (at(index) & 0xC0U) == 0x80U; };
  if (bytes.empty() || at(0) < 0xC2)
    return 0;
  if (at(0) < 0xE0)
    return bytes.size() >= 2 && continues(1) ? 2 : 0;
  if (at(0) < 0xF0) {
    if (bytes.size() < 3 || !continues(1) || !continues(2))
      return 0;
    const bool overlong = at(0) == 0xE0 && at(1) < 0xA0;
    const bool surrogate = at(0) == 0xED && at(1) >= 0xA0;
    return overlong || surrogate ? 0 : 3;
  }
  if (at(0) > 0xF4 || bytes.size() < 4 || !continues(1) || !continues(2) || !continues(3))
    return 0;
  const bool overlong = at(0) == 0xF0 && at(1) < 0x90;
  const bool beyond = at(0) == 0xF4 && at(1) >= 0x90;
  return overlong || beyond ? 0 : 4;
}

/// Sixteen bytes that the processor compares at once.
using Block [[gnu::vector_size(16)]] = unsigned char;
constexpr std::size_t blockSize = sizeof(Block);

inline Block loadBlock(const char* from) {
  Block block;
  std::memcpy(&block, from, blockSize);
  return block;
}

/// The marks of `findMark` among the sixteen bytes from `from` on: in the byte of each its highest
/// bit or all, and 0 in the others. Reads the byte before, too.
inline std::array<std::uint64_t, 2> marksOfBlock(const char* from) {
  const Block here = loadBlock(from);
  const Block before = loadBlock(from - 1);
  const Block marks =
      (here & 0x80) | reinterpret_cast<Block>(here == '\x1b') |
      (reinterpret_cast<Block>(here == '.') & reinterpret_cast<Block>(before == '/'));
  std::array<std::uint64_t, 2> words{};
  std::memcpy(words.data(), &marks, blockSize);
  return words;
}

/// The place of the first mark; `blockSize` when there is none.
inline std::size_t firstMark(const std::array<std::uint64_t, 2>& marks) {
  const int bits = marks[0] != 0 ? std::countr_zero(marks[0]) : 64 + std::countr_zero(marks[1]);
  return static_cast<std::size_t>(bits) / 8;
}

/// The first byte of `text` from `at` on that needs a closer look in a line with paths and colours:
/// what is not ASCII, the escape character, and a "." after a "/". The length of the text when
/// there is none. Reads nothing outside the text.
inline std::size_t findMark(std::string_view text, std::size_t at) {
  const auto isMark = [&](std::size_t place) {
    return static_cast<unsigned char>(text[place]) >= 0x80 || text[place] == '\x1b' ||
           (text[place] == '.' && place > 0 && text[place - 1] == '/');
  };
  if (at == 0) {
    if (text.empty() || isMark(0))
      return 0;
    at = 1;
  }
  for (; text.size() - at >= blockSize; at += blockSize)
    if (const auto marks = marksOfBlock(text.data() + at); (marks[0] | marks[1]) != 0)
      return at + firstMark(marks);
  if (at < text.size() && text.size() > blockSize) {
    // The last block of the text, without its bytes before `at`.
    const std::size_t start = text.size() - blockSize;
    const std::size_t skipped = at - start;
    auto marks = marksOfBlock(text.data() + start);
    if (skipped >= 8)
      marks[0] = 0;
    marks[skipped / 8] &= ~std::uint64_t{0} << skipped % 8 * 8;
    return start + firstMark(marks);
  }
  while (at < text.size() && !isMark(at))
    ++at;
  return at;
}

} // namespace driftmark
