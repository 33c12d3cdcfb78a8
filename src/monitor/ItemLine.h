#pragma once

#include <cstddef>
#include <string_view>

namespace driftmark {

/// The result of one pass over the bytes of a line.
struct LineScan {
  bool isUtf8 = true;
  bool hasEscape = false; ///< contains an escape character

  // Positions in the line; the length of the line when there is none.
  std::size_t uploadSeparator = 0; ///< the first " ↑ "
  std::size_t cloudSeparator = 0;  ///< the first " ☁"
  std::size_t lastUpArrow = 0;
  std::size_t lastDownArrow = 0;
};

/// Scans a line once. The positions of a line that is not UTF-8 are not valid.
LineScan scanLine(std::string_view line);

/// A line about an item, split into its parts.
struct ItemLine {
  std::string_view path;      ///< as printed, from its "/" on
  std::string_view remainder; ///< from the separator on; empty when there is none
  bool hasUpArrow = false;    ///< in the remainder
  bool hasDownArrow = false;  ///< in the remainder
};

/// Splits a line that begins with `itemPrefix`. `scan` is the scan of this very line, which has no
/// carriage returns at its end.
ItemLine cutItemLine(std::string_view line, const LineScan& scan);

inline constexpr std::string_view itemPrefix = " o /";
inline constexpr std::string_view cloud = "\u2601";

} // namespace driftmark
