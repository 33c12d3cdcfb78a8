#include "monitor/ItemLine.h"

#include "support/Utf8.h"

#include <algorithm>

namespace driftmark {

namespace {

constexpr std::string_view upArrow = "\u2191";
constexpr std::string_view downArrow = "\u2193";

/// Takes note of the character at `at` if it is one of those that cut lines.
void note(std::string_view line, std::size_t at, LineScan& scan) {
  const std::string_view here = line.substr(at);
  const bool afterSpace = at > 0 && line[at - 1] == ' ';
  if (here.starts_with(cloud)) {
    if (afterSpace && scan.cloudSeparator == line.size())
      scan.cloudSeparator = at - 1;
  } else if (here.starts_with(upArrow)) {
    scan.lastUpArrow = at;
    if (afterSpace && scan.uploadSeparator == line.size() &&
        here.substr(upArrow.size()).starts_with(' '))
      scan.uploadSeparator = at - 1;
  } else if (here.starts_with(downArrow)) {
    scan.lastDownArrow = at;
  }
}

} // namespace

LineScan scanLine(std::string_view line) {
  LineScan scan;
  scan.uploadSeparator = scan.cloudSeparator = line.size();
  scan.lastUpArrow = scan.lastDownArrow = line.size();
  for (std::size_t at = unescapedLength(line); at < line.size();
       at += unescapedLength(line.substr(at))) {
    if (line[at] == '\x1b') {
      scan.hasEscape = true;
      ++at;
      continue;
    }
    const std::size_t length = utf8SequenceLength(line.substr(at));
    if (length == 0) {
      scan.isUtf8 = false;
      return scan;
    }
    if (length == cloud.size())
      note(line, at, scan);
    at += length;
  }
  return scan;
}

/// The upload separator goes first, even where the other one stands before it.
ItemLine cutItemLine(std::string_view line, const LineScan& scan) {
  const auto isThere = [&](std::size_t position) { return position < line.size(); };
  std::size_t split = isThere(scan.uploadSeparator) ? scan.uploadSeparator : scan.cloudSeparator;
  split = std::min(split, line.size());
  const std::size_t pathAt = itemPrefix.size() - 1;
  return {line.substr(pathAt, split - pathAt), line.substr(split),
          isThere(scan.lastUpArrow) && scan.lastUpArrow >= split,
          isThere(scan.lastDownArrow) && scan.lastDownArrow >= split};
}

} // namespace driftmark
