// What a line of the per-item monitor changes in the model.

#include "monitor/SyncMonitor.h"
#include "support/Paths.h"
#include "support/Strings.h"

#include <algorithm>

namespace driftmark {

namespace {

// Beside its known state, a path carries a mark when it is, or was, in `active` or `issues`. A path
// without the mark need not be searched for there.
constexpr KnownItems::Value knownStateMask = 3;
constexpr KnownItems::Value trackedMark = 4;

bool namesAnIssue(std::string_view state) {
  std::string lower(state);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return lower.find("error") != std::string::npos || lower.find("conflict") != std::string::npos;
}

} // namespace

/// Some lines are read before the first of them is applied: meanwhile the processor loads the
/// places of their paths in `knownState_`, each of which is a cache miss.
bool SyncMonitor::parse(std::string_view line) {
  ReadLine& read = readLines_[readCount_++];
  read.item = readItemLine(line, read.storage);
  if (!read.item.path.empty()) {
    read.fingerprint = pathHash_.fingerprint(read.item.path);
    knownState_.prefetch(read.fingerprint);
  }
  return readCount_ == readLines_.size() && applyReadLines();
}

bool SyncMonitor::applyReadLines() {
  bool changed = false;
  const Date now = ports_.clock.now();
  for (std::size_t i = 0; i < readCount_; ++i) {
    changed |= apply(readLines_[i], now);
    clearScratch(readLines_[i].storage);
  }
  readCount_ = 0;
  return changed;
}

bool SyncMonitor::apply(const ReadLine& line, Date now) {
  using Kind = ItemLine::Kind;
  const Kind kind = line.item.kind;
  ++tally_.lines;
  tally_.invalidLines += kind == Kind::invalid ? 1 : 0;
  if (kind == Kind::invalid || kind == Kind::other)
    return false;
  ++tally_.itemLines;
  if (kind == Kind::progress)
    return applyProgress(line, now);
  if (kind == Kind::unrecognized)
    return applyUnrecognized(line);
  return kind != Kind::ignored && applySettled(line);
}

/// A transfer starts or continues.
bool SyncMonitor::applyProgress(const ReadLine& line, Date now) {
  const ItemLine& item = line.item;
  const ItemPath path = pathOf(line);
  clearIssue(path);
  if (active_.update(path, item.direction, item.percent, now)) {
    log({item.direction == Direction::upload ? "uploading" : "downloading", " ",
         lastPathComponent(item.path)});
    ++tally_.transfersStarted;
    if (!sweepTimer_)
      startSweepTimer();
    knownState_.exchange(line.fingerprint, trackedMark, knownStateMask);
  }
  return true;
}

/// A state that is neither in sync nor evicted. It matters only when it names an issue.
bool SyncMonitor::applyUnrecognized(const ReadLine& line) {
  const std::string_view state = line.item.state;
  const std::string_view name = lastPathComponent(line.item.path);
  if (loggedUnknownStates_.exchange(pathHash_.fingerprint(state), 1) == 0) {
    log({"unrecognized state \"", state, "\" for ", name});
    ++tally_.unrecognizedStates;
  }
  if (!namesAnIssue(state))
    return false;
  knownState_.exchange(line.fingerprint, trackedMark, knownStateMask);
  std::string& issue = issues_[std::string(pathOf(line))];
  if (issue == state)
    return false;
  std::string(state).swap(issue); // an assignment would keep the memory of a longer one
  log({"sync issue on ", name, ": ", state});
  ++tally_.issuesRaised;
  return true;
}

/// The item is in sync or only in iCloud.
bool SyncMonitor::applySettled(const ReadLine& line) {
  const bool evicted = line.item.kind == ItemLine::Kind::evicted;
  const KnownState state = evicted ? KnownState::evicted : KnownState::current;
  const KnownItems::Value before =
      knownState_.exchange(line.fingerprint, static_cast<KnownItems::Value>(state));
  const bool wasCurrent =
      (before & knownStateMask) == static_cast<KnownItems::Value>(KnownState::current);
  const bool tracked = (before & trackedMark) != 0;
  if (!tracked && !(evicted && wasCurrent))
    return false;

  const ItemPath path = pathOf(line);
  const std::string_view name = lastPathComponent(path.printed);
  const bool issueCleared = tracked && clearIssue(path);
  const auto finished = tracked ? active_.remove(path) : std::nullopt;
  if (finished && evicted) {
    log({"download cancelled ", name});
    ++tally_.downloadsCancelled;
    return true;
  }
  if (finished) {
    complete(*finished);
    return true;
  }
  if (!evicted || !wasCurrent)
    return issueCleared;
  addRecent(std::string(path), RecentKind::evicted);
  log({"evicted ", name});
  ++tally_.evictions;
  return true;
}

ItemPath SyncMonitor::pathOf(const ReadLine& line) const {
  return {mobileDocs_, line.item.path, line.fingerprint.low};
}

bool SyncMonitor::clearIssue(const ItemPath& path) {
  const auto found = issues_.empty() ? issues_.end() : issues_.find(path);
  if (found == issues_.end())
    return false;
  issues_.erase(found);
  return true;
}

} // namespace driftmark
