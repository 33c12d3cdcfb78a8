// What a line of the global monitor means.

#include "monitor/GlobalLine.h"

#include "monitor/Patterns.h"
#include "support/Numbers.h"
#include "support/Strings.h"
#include "support/Utf8.h"

#include <string>

namespace driftmark {

std::optional<GlobalLine> readGlobalLine(std::string_view line) {
  if (!isUtf8(line))
    return std::nullopt;
  std::string storage;
  const auto match = firstGlobal(withoutAnsi(line, storage));
  if (!match)
    return std::nullopt;
  const auto fraction = toDouble(match->fraction);
  const auto total = toInt64(match->total);
  if (!fraction || !total || *total < 1)
    return std::nullopt;
  return GlobalLine{*total, *fraction >= 1.0};
}

} // namespace driftmark
