#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace driftmark {

/// Terminal colour sequences. `withoutAnsi` in support/Strings.h removes them.
inline constexpr const char* ansiPattern = "\x1b\\[[0-9;]*m";

/// A percentage; group 1 is its number.
inline constexpr const char* percentPattern = R"(([0-9]+(?:\.[0-9]+)?)%)";

/// A progress report of the global monitor; the groups are the fraction, the completed count and
/// the total.
inline constexpr const char* globalPattern =
    "Fraction completed: ([0-9.]+) / Completed: ([0-9]+) of ([0-9]+)";

// The functions below find exactly what a regular-expression engine finds with these patterns, at a
// fraction of the cost.

/// Group 1 of the first match of `percentPattern`.
std::optional<std::string_view> firstPercent(std::string_view text);

/// The groups of a match of `globalPattern`.
struct GlobalMatch {
  std::string_view fraction;
  std::string_view completed;
  std::string_view total;
};

/// The first match of `globalPattern`.
std::optional<GlobalMatch> firstGlobal(std::string_view text);

} // namespace driftmark
