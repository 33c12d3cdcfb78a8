#pragma once

#include <cstddef>
#include <string_view>

namespace driftmark {

/// What one pass over the bytes of a line finds out.
struct LineScan {
  bool isUtf8 = true;
  bool hasEscape = false; ///< holds an escape character

  // Positions in the line; its length where there is none.
  std::size_t uploadSeparator = 0; ///< the first " ↑ "
  std::size_t cloudSeparator = 0;  ///< the first " ☁"
  std::size_t lastUpArrow = 0;
  std::size_t lastDownArrow = 0;
};

/// Looks through a line once. The rest is not filled in for a line that is not UTF-8.
LineScan scanLine(std::string_view line);

/// A line about an item, cut into its parts.
struct ItemLine {
  std::string_view path;      ///< as printed, from its "/" on
  std::string_view remainder; ///< from the separator on; empty where there is none
  bool hasUpArrow = false;    ///< in the remainder
  bool hasDownArrow = false;  ///< in the remainder
};

/// Cuts a line that begins with `itemPrefix`, ends at its last wanted byte, and was scanned.
ItemLine cutItemLine(std::string_view line, const LineScan& scan);

inline constexpr std::string_view itemPrefix = " o /";
inline constexpr std::string_view cloud = "\u2601";

} // namespace driftmark
