// What a line of the per-item monitor means.

#include "monitor/ItemLine.h"

#include "monitor/Patterns.h"
#include "support/Numbers.h"
#include "support/Paths.h"
#include "support/Strings.h"
#include "support/Utf8.h"

#include <algorithm>
#include <cstddef>

namespace driftmark {

namespace {

constexpr std::string_view itemPrefix = " o /";
constexpr std::string_view cloud = "\u2601";
constexpr std::string_view upArrow = "\u2191";
constexpr std::string_view downArrow = "\u2193";
constexpr std::string_view evictedMarker = "not downloaded";
constexpr char escape = '\x1b';

constexpr std::size_t none = std::string_view::npos;

/// The result of one scan of a line. The positions of a line that is not UTF-8 are not valid.
struct Marks {
  bool isUtf8 = true;
  bool hasEscape = false;
  bool hasHiddenName = false;         ///< "/." somewhere
  std::size_t uploadSeparator = none; ///< the first " ↑ "
  std::size_t cloudSeparator = none;  ///< the first " ☁"
  std::size_t lastUpArrow = none;
  std::size_t lastDownArrow = none;
};

bool isAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

/// Records the character at `at` when it is a cloud or an arrow.
void record(std::string_view line, std::size_t at, Marks& marks) {
  const std::string_view here = line.substr(at);
  const bool afterSpace = at > 0 && line[at - 1] == ' ';
  if (here.starts_with(cloud)) {
    if (afterSpace && marks.cloudSeparator == none)
      marks.cloudSeparator = at - 1;
  } else if (here.starts_with(upArrow)) {
    marks.lastUpArrow = at;
    if (afterSpace && marks.uploadSeparator == none && here.substr(upArrow.size()).starts_with(' '))
      marks.uploadSeparator = at - 1;
  } else if (here.starts_with(downArrow)) {
    marks.lastDownArrow = at;
  }
}

/// Scans a line once.
Marks findMarks(std::string_view line) {
  Marks marks;
  for (std::size_t at = findMark(line, 0); at < line.size();) {
    if (isAscii(line[at])) {
      (line[at] == escape ? marks.hasEscape : marks.hasHiddenName) = true;
      at = findMark(line, at + 1);
      continue;
    }
    const std::size_t length = utf8SequenceLength(line.substr(at));
    if (length == 0) {
      marks.isUtf8 = false;
      return marks;
    }
    if (length == cloud.size())
      record(line, at, marks);
    at += length;
    if (at < line.size() && isAscii(line[at]))
      at = findMark(line, at);
  }
  return marks;
}

std::string_view withoutOuterReturns(std::string_view text) {
  while (text.starts_with('\r'))
    text.remove_prefix(1);
  while (text.ends_with('\r'))
    text.remove_suffix(1);
  return text;
}

/// Whether the item is hidden or lies in a folder whose name begins with ".Trash".
bool isIgnored(std::string_view path) {
  return lastPathComponent(path).starts_with('.') || path.find("/.Trash") != std::string_view::npos;
}

void readState(std::string_view state, ItemLine& item) {
  if (state.empty() || state == cloud) {
    item.kind = ItemLine::Kind::current;
  } else if (state.find(evictedMarker) != std::string_view::npos) {
    item.kind = ItemLine::Kind::evicted;
  } else {
    item.kind = ItemLine::Kind::unrecognized;
    item.state = state.starts_with(cloud) ? trimmed(state.substr(cloud.size())) : state;
  }
}

void readProgress(std::string_view remainder, bool isUpload, ItemLine& item) {
  item.kind = ItemLine::Kind::progress;
  item.direction = isUpload ? Direction::upload : Direction::download;
  if (const auto percent = firstPercent(remainder))
    item.percent = toDouble(*percent);
}

} // namespace

/// The upload separator takes precedence, even when the cloud comes before it.
ItemLine readItemLine(std::string_view line, std::string& storage) {
  ItemLine item;
  Marks marks = findMarks(line);
  if (!marks.isUtf8) {
    item.kind = ItemLine::Kind::invalid;
    return item;
  }
  std::string_view text = line;
  if (marks.hasEscape || line.starts_with('\r')) {
    text = withoutOuterReturns(withoutAnsi(line, storage));
    marks = findMarks(text);
  }
  text = withoutOuterReturns(text);
  if (!text.starts_with(itemPrefix))
    return item;

  const std::size_t separator =
      marks.uploadSeparator != none ? marks.uploadSeparator : marks.cloudSeparator;
  const std::size_t split = std::min(separator, text.size());
  const std::size_t pathAt = itemPrefix.size() - 1;
  item.path = text.substr(pathAt, split - pathAt);
  if (marks.hasHiddenName && isIgnored(item.path)) {
    item.kind = ItemLine::Kind::ignored;
    return item;
  }
  const std::string_view remainder = text.substr(split);
  const auto isInRemainder = [&](std::size_t position) {
    return position != none && position >= split;
  };
  const bool isUpload = isInRemainder(marks.lastUpArrow);
  if (isUpload || isInRemainder(marks.lastDownArrow))
    readProgress(remainder, isUpload, item);
  else
    readState(trimmed(remainder), item);
  return item;
}

} // namespace driftmark
