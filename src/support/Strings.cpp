// How strings are trimmed and escaped.

#include "support/Strings.h"

namespace driftmark {

namespace {

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

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos)
    return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
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
