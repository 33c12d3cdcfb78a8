#include "support/TextRepair.h"

#include "support/TextScan.h"

namespace driftmark {

namespace {

constexpr std::string_view replacementCharacter = "\uFFFD";

bool isControl(char byte) {
  const auto code = static_cast<unsigned char>(byte);
  return (code < 0x20 && byte != '\t') || code == 0x7f;
}

void appendEscaped(std::string& text, char byte) {
  constexpr std::string_view hexDigits = "0123456789abcdef";
  const auto code = static_cast<unsigned char>(byte);
  if (byte == '\n')
    text += "\\n";
  else if (byte == '\r')
    text += "\\r";
  else
    text.append("\\x") += {hexDigits[code >> 4U], hexDigits[code & 0xfU]};
}

} // namespace

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

std::string oneLine(std::string_view text) {
  std::string line;
  line.reserve(text.size() + 1);
  for (const char byte : text) {
    if (isControl(byte))
      appendEscaped(line, byte);
    else
      line += byte;
  }
  return line;
}

} // namespace driftmark
