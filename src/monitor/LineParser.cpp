// What a line of the per-item monitor changes in the model.

#include "monitor/ItemLine.h"
#include "monitor/Patterns.h"
#include "monitor/SyncMonitor.h"
#include "support/Numbers.h"
#include "support/Paths.h"
#include "support/Strings.h"
#include "support/Utf8.h"

#include <algorithm>
#include <utility>

namespace driftmark {

namespace {

constexpr std::string_view evictedMarker = "not downloaded";
constexpr std::string_view plainEvictedState = " not downloaded"; // after the cloud
constexpr std::string_view trashName = ".Trash";

// Beside its known state, a path carries a mark when it is, or was, in `active` or `issues`. A path
// without the mark need not be searched for there.
constexpr PathTree::Value knownStateMask = 3;
constexpr PathTree::Value trackedMark = 4;

std::string_view withoutOuterReturns(std::string_view text) {
  while (text.starts_with('\r'))
    text.remove_prefix(1);
  while (text.ends_with('\r'))
    text.remove_suffix(1);
  return text;
}

/// Whether the path is of a hidden item or has a component that begins with ".Trash". Searches for
/// points, which are rarer than slashes.
bool isIgnored(std::string_view path) {
  if (lastPathComponent(path).starts_with('.'))
    return true;
  for (std::size_t at = path.find('.'); at != std::string_view::npos; at = path.find('.', at + 1))
    if (path[at - 1] == '/' && path.substr(at).starts_with(trashName))
      return true;
  return false;
}

bool namesAnIssue(std::string_view state) {
  std::string lower(state);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return lower.find("error") != std::string::npos || lower.find("conflict") != std::string::npos;
}

} // namespace

bool SyncMonitor::parse(std::string_view line) {
  ++tally_.lines;
  constexpr std::size_t pathAt = itemPrefix.size() - 1;
  if (const auto item = nextInFolder(line)) {
    ++tally_.itemLines;
    const std::size_t end = folderPrefix_.size() + item->name.size();
    return parseSettled(line.substr(pathAt, end - pathAt), item->name, item->evicted);
  }
  LineScan scan = scanLine(line);
  if (!scan.isUtf8) {
    ++tally_.invalidLines;
    return false;
  }
  std::string_view text = line;
  if (scan.hasEscape || line.starts_with('\r')) {
    text = withoutOuterReturns(withoutAnsi(line, withoutAnsi_));
    scan = scanLine(text);
  }
  text = withoutOuterReturns(text);
  if (!text.starts_with(itemPrefix))
    return false;
  ++tally_.itemLines;
  return parseItem(cutItemLine(text, scan));
}

/// Reads the most frequent kind of line: an item in sync or evicted, in the same folder as the item
/// before, with a plain name. What is known about that folder is not determined again. Absent for
/// every other line.
std::optional<SyncMonitor::SettledName> SyncMonitor::nextInFolder(std::string_view line) const {
  if (folderPrefix_.empty() || !line.starts_with(folderPrefix_))
    return std::nullopt;
  std::string_view tail = line.substr(folderPrefix_.size());
  if (tail.ends_with('\r'))
    tail.remove_suffix(1);
  std::string_view name = tail.substr(0, plainNameLength(tail));
  std::string_view state = tail.substr(name.size());
  if (!state.empty()) {
    if (!name.ends_with(' ') || !state.starts_with(cloud))
      return std::nullopt;
    name.remove_suffix(1);
    state.remove_prefix(cloud.size());
  }
  const bool evicted = state == plainEvictedState;
  if (name.empty() || name.starts_with('.') || name.ends_with('\r') || !(state.empty() || evicted))
    return std::nullopt;
  return SettledName{name, evicted};
}

bool SyncMonitor::parseItem(const ItemLine& item) {
  const std::string_view path = item.path;
  if (item.hasUpArrow || item.hasDownArrow)
    return parseProgress(path, item.remainder,
                         item.hasUpArrow ? Direction::upload : Direction::download);
  if (isIgnored(path))
    return false;

  std::string_view state = trimmed(item.remainder);
  const bool isCurrent = state.empty() || state == cloud;
  if (isCurrent || state.find(evictedMarker) != std::string_view::npos) {
    const std::size_t slash = path.rfind('/');
    enterFolder(path.substr(0, slash));
    return parseSettled(path, path.substr(slash + 1), !isCurrent);
  }
  // The text of a state is what follows the cloud.
  if (state.starts_with(cloud))
    state = trimmed(state.substr(cloud.size()));
  return parseUnrecognized(path, state);
}

/// A line with an arrow: a transfer starts or continues.
bool SyncMonitor::parseProgress(std::string_view path, std::string_view remainder,
                                Direction direction) {
  const std::string_view full = fullPath(path);
  const HashedPath key(full);
  auto found = active_.find(key);
  const bool isNew = found == active_.end();
  if (isNew && isIgnored(path))
    return false;

  clearIssue(key);
  const auto percentText = firstPercent(remainder);
  const auto percent = percentText ? toDouble(*percentText) : std::nullopt;
  if (isNew) {
    log({direction == Direction::upload ? "uploading" : "downloading", " ",
         lastPathComponent(path)});
    ++tally_.transfersStarted;
    if (!sweepTimer_)
      startSweepTimer();
    markTracked(path);
    found = active_.emplace(full, ActiveItem{std::string(full), direction, percent, {}}).first;
  }
  ActiveItem& item = found->second;
  item.direction = direction;
  item.percent = percent;
  item.lastUpdate = ports_.clock.now();
  return true;
}

/// A state that is neither in sync nor evicted. It changes the model only when it names an issue.
bool SyncMonitor::parseUnrecognized(std::string_view path, std::string_view state) {
  const std::string_view name = lastPathComponent(path);
  if (!loggedUnknownStates_.contains(state)) {
    loggedUnknownStates_.emplace(state);
    log({"unrecognized state \"", state, "\" for ", name});
    ++tally_.unrecognizedStates;
  }
  if (!namesAnIssue(state))
    return false;
  markTracked(path);
  std::string& issue = issues_[std::string(fullPath(path))];
  if (issue == state)
    return false;
  issue = state;
  log({"sync issue on ", name, ": ", state});
  ++tally_.issuesRaised;
  return true;
}

/// The next lines tend to be about the folder of a settled item. A folder whose text contains an
/// escape character is read anew each time, because in another line the same bytes may have to be
/// removed.
void SyncMonitor::enterFolder(std::string_view folder) {
  folder_ = knownState_.enter(folder);
  if (folder.find('\x1b') != std::string_view::npos) {
    folderPrefix_.clear();
    return;
  }
  folderPrefix_.assign(itemPrefix.substr(0, itemPrefix.size() - 1)).append(folder).append("/");
}

/// The item, called `lastName` in the folder entered last, is in sync or only in iCloud.
bool SyncMonitor::parseSettled(std::string_view path, std::string_view lastName, bool evicted) {
  const KnownState state = evicted ? KnownState::evicted : KnownState::current;
  const PathTree::Value before =
      knownState_.exchange(folder_, lastName, static_cast<PathTree::Value>(state));
  const bool wasCurrent =
      (before & knownStateMask) == static_cast<PathTree::Value>(KnownState::current);
  const bool tracked = (before & trackedMark) != 0;
  if (!tracked && !(evicted && wasCurrent))
    return false;

  const std::string_view full = fullPath(path);
  const HashedPath key(full);
  const bool issueCleared = tracked && clearIssue(key);
  const auto found = tracked ? active_.find(key) : active_.end();
  if (found == active_.end()) {
    if (!evicted || !wasCurrent)
      return issueCleared;
    addRecent(full, RecentKind::evicted);
    log({"evicted ", lastPathComponent(path)});
    ++tally_.evictions;
    return true;
  }

  const ActiveItem item = std::move(found->second);
  active_.erase(found);
  if (evicted) {
    log({"download cancelled ", lastPathComponent(path)});
    ++tally_.downloadsCancelled;
  } else {
    complete(item);
  }
  return true;
}

/// The path in the file system; valid until the next call.
std::string_view SyncMonitor::fullPath(std::string_view path) {
  fullPath_.resize(mobileDocs_.size());
  fullPath_ += path;
  return fullPath_;
}

bool SyncMonitor::clearIssue(const HashedPath& fullPath) {
  if (issues_.empty())
    return false;
  const auto found = issues_.find(fullPath);
  if (found == issues_.end())
    return false;
  issues_.erase(found);
  return true;
}

void SyncMonitor::markTracked(std::string_view path) {
  knownState_.exchange(path, trackedMark, knownStateMask);
}

} // namespace driftmark
