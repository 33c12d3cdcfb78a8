#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace driftmark {

/// The number that all of `text` spells: decimal digits with at most one point, with an optional
/// sign before and an optional decimal exponent after them. The decimal point is always ".".
std::optional<double> toDouble(std::string_view text);

/// The signed 64-bit number that all of `text` spells in decimal digits, with an optional sign.
/// Absent when it is out of range.
std::optional<std::int64_t> toInt64(std::string_view text);

/// The sum of `one` and `other`. Absent when it is out of range.
std::optional<std::int64_t> sum(std::int64_t one, std::int64_t other);

/// `number` rounded to a whole number, in decimal digits. Halves are rounded to the even number.
std::string wholeNumber(double number);

} // namespace driftmark
