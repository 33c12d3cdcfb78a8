// Which part of a `brctl quota` report is the number of bytes.

#include "monitor/QuotaReport.h"

#include "support/Numbers.h"

namespace driftmark {

/// Only spaces separate words. A number with a line end behind it is therefore no number.
std::optional<std::int64_t> parseQuota(std::string_view text) {
  const std::size_t start = text.find_first_not_of(' ');
  if (start == std::string_view::npos)
    return std::nullopt;
  const std::string_view word = text.substr(start);
  return toInt64(word.substr(0, word.find(' ')));
}

} // namespace driftmark
