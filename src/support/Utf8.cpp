// Which bytes are well-formed UTF-8, found eight or more bytes at a time.

#include "support/Utf8.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace driftmark {

namespace {

// A word holds eight bytes; the byte at the lowest address is the lowest in the word.
static_assert(std::endian::native == std::endian::little);
constexpr std::uint64_t ones = 0x0101010101010101;
constexpr std::uint64_t highBits = 0x8080808080808080;

std::uint64_t loadWord(const char* from) {
  std::uint64_t word = 0;
  std::memcpy(&word, from, sizeof word);
  return word;
}

/// Marks the high bit of the bytes that equal `wanted`. Bytes above the lowest of them may be
/// marked too.
constexpr std::uint64_t equalBytes(std::uint64_t word, char wanted) {
  const std::uint64_t difference = word ^ (ones * static_cast<unsigned char>(wanted));
  return (difference - ones) & ~difference & highBits;
}

/// How many bytes are below the lowest marked byte.
std::size_t bytesBelow(std::uint64_t marks) {
  return static_cast<std::size_t>(std::countr_zero(marks)) / 8;
}

constexpr std::size_t blockSize = 32;
constexpr char escape = '\x1b';
constexpr std::string_view replacementCharacter = "\uFFFD";

/// Whether the block at `from` is ASCII without the escape character. Written so that compilers
/// turn it into a few vector instructions.
bool isPlainBlock(const char* from) {
  std::array<unsigned char, blockSize> marks;
  for (std::size_t i = 0; i < blockSize; ++i)
    marks[i] = static_cast<unsigned char>(static_cast<unsigned char>(from[i]) |
                                          (from[i] == escape ? 0x80U : 0U));
  std::array<std::uint64_t, blockSize / 8> words;
  std::memcpy(words.data(), marks.data(), blockSize);
  return ((words[0] | words[1] | words[2] | words[3]) & highBits) == 0;
}

/// How many bytes at the start of `bytes` are left unmarked by `marksOf(word)`. The last word may
/// be padded with zeros.
template <class MarksOf> std::size_t unmarkedLength(std::string_view bytes, MarksOf marksOf) {
  std::size_t at = 0;
  for (; at + 8 <= bytes.size(); at += 8)
    if (const std::uint64_t marks = marksOf(loadWord(bytes.data() + at)))
      return at + bytesBelow(marks);

  // The remaining bytes are moved to the low end of a word.
  const std::size_t left = bytes.size() - at;
  if (left == 0)
    return at;
  std::uint64_t word = 0;
  if (bytes.size() >= 8)
    word = loadWord(bytes.data() + bytes.size() - 8) >> (8 * (8 - left));
  else
    std::memcpy(&word, bytes.data(), left);
  const std::uint64_t marks = marksOf(word);
  return at + (marks != 0 ? std::min(bytesBelow(marks), left) : left);
}

} // namespace

std::size_t utf8SequenceLength(std::string_view bytes) {
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

bool isUtf8(std::string_view bytes) {
  for (;;) {
    bytes.remove_prefix(asciiLength(bytes));
    if (bytes.empty())
      return true;
    const std::size_t length = utf8SequenceLength(bytes);
    if (length == 0)
      return false;
    bytes.remove_prefix(length);
  }
}

std::string wellFormed(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const std::size_t ascii = asciiLength(bytes);
    const std::size_t length = ascii > 0 ? ascii : utf8SequenceLength(bytes);
    text += length > 0 ? bytes.substr(0, length) : replacementCharacter;
    bytes.remove_prefix(length > 0 ? length : 1);
  }
  return text;
}

std::size_t asciiLength(std::string_view bytes) {
  return unmarkedLength(bytes, [](std::uint64_t word) { return word & highBits; });
}

std::size_t unescapedLength(std::string_view bytes) {
  std::size_t blocks = 0;
  while (blocks + blockSize <= bytes.size() && isPlainBlock(bytes.data() + blocks))
    blocks += blockSize;
  return blocks + unmarkedLength(bytes.substr(blocks), [](std::uint64_t word) {
           return (word & highBits) | equalBytes(word, escape);
         });
}

std::size_t plainNameLength(std::string_view bytes) {
  return unmarkedLength(bytes, [](std::uint64_t word) {
    return (word & highBits) | equalBytes(word, escape) | equalBytes(word, '/');
  });
}

} // namespace driftmark
