// How strings are trimmed, stripped of colours and escaped.

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

/// The length of the colour sequence at the start of `text`; 0 when there is none.
std::size_t ansiLength(std::string_view text) {
  if (!text.starts_with("\x1b["))
    return 0;
  std::size_t end = 2;
  while (end < text.size() && ((text[end] >= '0' && text[end] <= '9') || text[end] == ';'))
    ++end;
  return end < text.size() && text[end] == 'm' ? end + 1 : 0;
}

} // namespace

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos)
    return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string_view withoutAnsi(std::string_view text, std::string& storage) {
  std::size_t escape = text.find('\x1b');
  if (escape == std::string_view::npos)
    return text;
  storage.clear();
  std::size_t copied = 0;
  for (; escape != std::string_view::npos; escape = text.find('\x1b', escape)) {
    const std::size_t length = ansiLength(text.substr(escape));
    if (length == 0) {
      ++escape;
      continue;
    }
    storage.append(text.substr(copied, escape - copied));
    escape += length;
    copied = escape;
  }
  storage.append(text.substr(copied));
  return storage;
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
