// Where a line about an item is split into path and remainder.

#include "monitor/ItemLine.h"

#include "support/Utf8.h"

#include <algorithm>

namespace driftmark {

namespace {

constexpr std::string_view upArrow = "\u2191";
constexpr std::string_view downArrow = "\u2193";

/// Records the character at `at` when it is a cloud or an arrow.
void record(std::string_view line, std::size_t at, LineScan& scan) {
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
      record(line, at, scan);
    at += length;
  }
  return scan;
}

/// The upload separator takes precedence, even when the cloud comes before it.
ItemLine cutItemLine(std::string_view line, const LineScan& scan) {
  const auto exists = [&](std::size_t position) { return position < line.size(); };
  std::size_t split = exists(scan.uploadSeparator) ? scan.uploadSeparator : scan.cloudSeparator;
  split = std::min(split, line.size());
  const std::size_t pathAt = itemPrefix.size() - 1;
  return {line.substr(pathAt, split - pathAt), line.substr(split),
          exists(scan.lastUpArrow) && scan.lastUpArrow >= split,
          exists(scan.lastDownArrow) && scan.lastDownArrow >= split};
}

} // namespace driftmark
