#pragma once

#include "ports/SystemText.h"

namespace driftmark {

/// Texts as macOS words them in English, whatever the locale of this process.
class LinuxSystemText : public SystemText {
public:
  /// In decimal units: "Zero KB" for 0; whole bytes below 1000, as in "1 byte" and "512 bytes";
  /// whole KB; MB with at most one decimal; GB, TB, PB and EB with at most two. Rounded to the
  /// nearest, halves away from zero; 1000 of a unit after rounding is 1 of the next. Trailing zero
  /// decimals are left out. A negative count has "-" in front.
  std::string byteCount(std::int64_t bytes) const override;

  /// Strictly by the grammar of URLs: a text with a space in it is none.
  bool isUrl(const std::string& text) const override;

  /// In the largest unit that fits, rounded down to a whole number: "2 minutes ago", "in 1 week".
  /// Less than a second either way is "in 0 seconds". Days, weeks, months and years are those of
  /// the local calendar. Any thread.
  std::string relativeTime(Date date, Date now) const override;

  /// Where something is cut off, bytes that are not UTF-8 are returned as U+FFFD.
  std::string firstCharacters(const std::string& text, std::size_t count) const override;
};

} // namespace driftmark
