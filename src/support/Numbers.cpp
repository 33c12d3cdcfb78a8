// How numbers are read and written, independent of the locale.

#include "support/Numbers.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <system_error>

namespace driftmark {

namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

/// Reads a short decimal without sign or exponent. The result is exact, since one division of two
/// exact doubles is rounded once.
std::optional<double> shortDecimal(std::string_view text) {
  constexpr double powers[] = {1,   1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                               1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  constexpr std::size_t maxCharacters = 16; // 15 digits stay below 2^53
  if (text.empty() || text.size() > maxCharacters)
    return std::nullopt;
  std::int64_t digits = 0;
  std::size_t count = 0;
  std::optional<std::size_t> point;
  for (const char c : text) {
    if (c == '.' && !point)
      point = count;
    else if (isDigit(c) && ++count < maxCharacters)
      digits = digits * 10 + (c - '0');
    else
      return std::nullopt;
  }
  if (count == 0)
    return std::nullopt;
  return static_cast<double>(digits) / powers[point ? count - *point : 0];
}

} // namespace

std::optional<double> toDouble(std::string_view text) {
  if (const auto value = shortDecimal(text))
    return value;
  if (text.find_first_not_of("0123456789.eE+-") != std::string_view::npos)
    return std::nullopt;
  std::istringstream stream{std::string(text)};
  stream.imbue(std::locale::classic());
  double value = 0;
  stream >> value;
  if (stream.fail() || stream.peek() != std::istringstream::traits_type::eof())
    return std::nullopt;
  return value;
}

std::optional<std::int64_t> toInt64(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-'))
      return std::nullopt;
  }
  std::int64_t value = 0;
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stopped != end)
    return std::nullopt;
  return value;
}

std::optional<std::int64_t> sum(std::int64_t one, std::int64_t other) {
  using Limits = std::numeric_limits<std::int64_t>;
  if (other > 0 ? one > Limits::max() - other : one < Limits::min() - other)
    return std::nullopt;
  return one + other;
}

std::string wholeNumber(double number) {
  // Before macOS 13.3, `std::to_chars` takes no doubles.
  std::array<char, std::numeric_limits<double>::max_exponent10 + 3> digits{};
  const int count = std::snprintf(digits.data(), digits.size(), "%.0f", number);
  return {digits.data(), static_cast<std::size_t>(count)};
}

} // namespace driftmark
