// Which bytes are well-formed UTF-8, found eight or more bytes at a time.

#include "support/Utf8.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace driftmark {

namespace {

// A word holds eight bytes; the byte at the lowest address is the lowest in the word.
static_assert(std::endian::native == std::endian::little);
constexpr std::uint64_t highBits = 0x8080808080808080;

std::uint64_t loadWord(const char* from) {
  std::uint64_t word = 0;
  std::memcpy(&word, from, sizeof word);
  return word;
}

/// How many bytes are below the lowest marked byte.
std::size_t bytesBelow(std::uint64_t marks) {
  return static_cast<std::size_t>(std::countr_zero(marks)) / 8;
}

constexpr std::string_view replacementCharacter = "\uFFFD";

bool isAscii(char byte) {
  return static_cast<unsigned char>(byte) < 0x80;
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
  std::size_t at = 0;
  for (; at + 8 <= bytes.size(); at += 8)
    if (const std::uint64_t marks = loadWord(bytes.data() + at) & highBits; marks != 0)
      return at + bytesBelow(marks);
  while (at < bytes.size() && isAscii(bytes[at]))
    ++at;
  return at;
}

} // namespace driftmark
