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

std::string_view wholeCharacters(std::string_view text, std::size_t maxSize) {
  if (text.size() <= maxSize)
    return text;
  const auto continues = [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
  };
  while (maxSize > 0 && continues(text[maxSize]))
    --maxSize;
  return text.substr(0, maxSize);
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
