#pragma once

#include "ports/Text.h"

namespace driftmark {

/// Texts as macOS words them in English, whatever the locale of this process.
class LinuxText : public Text {
public:
  /// The byte count in decimal units: "Zero KB" for none; whole bytes below 1000, as in "1 byte"
  /// and "512 bytes"; whole KB; MB with at most one decimal; GB, TB, PB and EB with at most two.
  /// Rounded to the nearest, halves away from zero; what rounds to 1000 of a unit is 1 of the next.
  /// Decimals that are zero at the end are left out. A negative count is the positive one behind
  /// "-".
  std::string byteCount(std::int64_t bytes) const override;

  /// Strictly by the grammar of addresses, so that one with a space in it is none.
  bool isUrl(const std::string& text) const override;

  std::string relativeTime(Date date, Date now) const override;
  std::string firstCharacters(const std::string& text, std::size_t count) const override;
};

} // namespace driftmark
