#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace driftmark {

/// The number that the whole of `text` spells: decimal digits with at most one point, optionally a
/// sign in front and a decimal exponent behind. The decimal point is "." whatever the locale.
std::optional<double> toDouble(std::string_view text);

/// The signed 64-bit number that the whole of `text` spells in decimal digits, optionally with a
/// sign in front. Absent beyond the range.
std::optional<std::int64_t> toInt64(std::string_view text);

/// `one` and `other` added up. Absent beyond the range.
std::optional<std::int64_t> sum(std::int64_t one, std::int64_t other);

/// `number` rounded to a whole one, in decimal digits; a half goes to the even neighbour.
std::string wholeNumber(double number);

} // namespace driftmark
