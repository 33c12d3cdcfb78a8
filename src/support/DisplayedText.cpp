// Which characters of a text from outside are displayed.

#include "support/DisplayedText.h"

#include "support/Utf8.h"

#include <algorithm>

namespace driftmark {

namespace {

constexpr char32_t replacementCharacter = U'\uFFFD';
constexpr std::string_view replacementText = "\uFFFD";

/// The first code point of `text`, which is not empty, and its length in bytes. A byte that belongs
/// to none counts as U+FFFD.
struct CodePoint {
  char32_t value;
  std::size_t length = 1;

  explicit CodePoint(std::string_view text) : value(static_cast<unsigned char>(text.front())) {
    if (value < 0x80)
      return;
    length = utf8SequenceLength(text);
    if (length == 0) {
      value = replacementCharacter;
      length = 1;
      return;
    }
    value &= 0x7fU >> length;
    for (const char byte : text.substr(1, length - 1))
      value = value << 6U | (static_cast<unsigned char>(byte) & 0x3fU);
  }
};

bool isDirectionControl(char32_t character) {
  return character == U'\u061C' || character == U'\u200E' || character == U'\u200F' ||
         (character >= U'\u202A' && character <= U'\u202E') ||
         (character >= U'\u2066' && character <= U'\u206F');
}

/// The line feed, vertical tab, form feed and carriage return, the next line, and the separators of
/// lines and paragraphs.
bool isLineBreak(char32_t character) {
  return (character >= 0x0A && character <= 0x0D) || character == 0x85 || character == U'\u2028' ||
         character == U'\u2029';
}

bool isControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

} // namespace

std::string displayedText(std::string_view text, LineBreaks lineBreaks, std::size_t maxCodePoints) {
  const bool isOneLine = lineBreaks == LineBreaks::becomeSpaces;
  std::string shown;
  shown.reserve(std::min(text.size(), 4 * maxCodePoints));
  for (std::size_t count = 0; count < maxCodePoints && !text.empty();) {
    if (text.starts_with("\r\n"))
      text.remove_prefix(1);
    const CodePoint next(text);
    const std::string_view bytes = text.substr(0, next.length);
    text.remove_prefix(next.length);
    if (isDirectionControl(next.value))
      continue;
    ++count;
    if (isLineBreak(next.value))
      shown += isOneLine ? ' ' : '\n';
    else if (next.value == '\t')
      shown += isOneLine ? ' ' : '\t';
    else if (isControl(next.value) || next.value == replacementCharacter)
      shown += replacementText;
    else
      shown += bytes;
  }
  return shown;
}

} // namespace driftmark
