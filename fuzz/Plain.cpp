// What the targets compare the program with.

#include "Plain.h"

#include "monitor/Patterns.h"
#include "support/Regex.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace driftmark::fuzz::plain {

/// Decodes the code point, which must be the smallest of its length at least, and no surrogate.
std::size_t sequenceLength(std::string_view bytes) {
  constexpr std::array<std::uint32_t, 5> smallest{0, 0, 0x80, 0x800, 0x10000};
  if (bytes.empty())
    return 0;
  const auto first = static_cast<unsigned char>(bytes[0]);
  const std::size_t length = first < 0x80           ? 1
                             : first >> 5U == 0x06U ? 2
                             : first >> 4U == 0x0eU ? 3
                             : first >> 3U == 0x1eU ? 4
                                                    : 0;
  if (length <= 1 || bytes.size() < length)
    return length == 1 ? 1 : 0;
  std::uint32_t point = first & (0x7fU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(bytes[i]);
    if (next >> 6U != 2)
      return 0;
    point = point << 6U | (next & 0x3fU);
  }
  const bool isSurrogate = point >= 0xd800 && point < 0xe000;
  return point < smallest.at(length) || point > 0x10ffff || isSurrogate ? 0 : length;
}

bool isUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t length = sequenceLength(bytes);
    if (length == 0)
      return false;
    bytes.remove_prefix(length);
  }
  return true;
}

std::string withoutAnsi(std::string_view text) {
  static const std::regex pattern(ansiPattern);
  return std::regex_replace(std::string(text), pattern, "");
}

std::string trimmed(std::string_view text) {
  const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
  while (!text.empty() && isBlank(text.front()))
    text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back()))
    text.remove_suffix(1);
  return std::string(text);
}

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> pieces(1);
  for (const char c : text)
    if (c == separator)
      pieces.emplace_back();
    else
      pieces.back() += c;
  return pieces;
}

std::optional<std::int64_t> toInt64(std::string_view text) {
  using Limits = std::numeric_limits<std::int64_t>;
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+'))
    text.remove_prefix(1);
  if (text.empty())
    return std::nullopt;
  __extension__ __int128 number = 0;
  for (const char c : text) {
    if (c < '0' || c > '9')
      return std::nullopt;
    number = number * 10 + (isNegative ? '0' - c : c - '0');
    if (number > Limits::max() || number < Limits::min())
      return std::nullopt;
  }
  return static_cast<std::int64_t>(number);
}

std::optional<double> toDouble(const std::string& text) {
  if (text.empty() || text.find_first_not_of("0123456789.eE+-") != std::string::npos)
    return std::nullopt;
  char* end = nullptr;
  const double number = std::strtod(text.c_str(), &end);
  if (end != text.c_str() + text.size() || !std::isfinite(number))
    return std::nullopt;
  return number;
}

} // namespace driftmark::fuzz::plain
