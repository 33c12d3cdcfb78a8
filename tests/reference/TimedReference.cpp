// What the reference answers at which time, and how it is compared with the real monitor.

#include "reference/TimedReference.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace driftmark::test {

namespace {

/// The real monitor sums in another order.
bool nearlyEqual(const std::optional<double>& one, const std::optional<double>& other) {
  if (!one || !other || *one == *other)
    return one == other;
  return std::abs(*one - *other) <= 1e-9 * std::max(std::abs(*one), std::abs(*other));
}

std::string differentTransfer(const Transfers& actual, const ReferenceMonitor& expected) {
  if (actual.size() != expected.active().size())
    return "the number of active transfers";
  for (const auto& [path, item] : expected.active()) {
    const ActiveItem* const found = actual.find(path);
    if (!found)
      return path + ", which is not active,";
    if (found->path != path || found->direction != item.direction ||
        found->percent != item.percent || found->lastUpdate != item.lastUpdate)
      return "the transfer of " + path;
  }
  return "";
}

} // namespace

TimedReference::TimedReference(Date now, Seconds stalledAfter)
    : stalledAfter_(stalledAfter),
      sweepInterval_(std::clamp(stalledAfter / 3, SyncMonitor::minSweepInterval,
                                SyncMonitor::maxSweepInterval)) {
  clock_.set(now);
}

void TimedReference::ingest(std::string_view chunk) {
  const std::size_t started = monitor_.started();
  const std::size_t finished = monitor_.finished();
  changes_ += monitor_.ingest(chunk) ? 1 : 0;
  if (monitor_.started() > started && !nextSweep_)
    nextSweep_ = later(clock_.now(), sweepInterval_);
  for (std::size_t count = monitor_.finished() - finished; count > 0; --count)
    redraws_.insert(later(clock_.now(), SyncMonitor::holdRedrawDelay));
}

void TimedReference::advance(Seconds distance) {
  const Date target = later(clock_.now(), distance);
  while (nextSweep_ && *nextSweep_ <= target) {
    clock_.set(*nextSweep_);
    monitor_.sweep([this](const std::string& path) { return files_.contains(path); });
    nextSweep_.reset();
    if (!monitor_.active().empty())
      nextSweep_ = later(clock_.now(), sweepInterval_);
    ++changes_;
  }
  clock_.set(target);
  while (!redraws_.empty() && *redraws_.begin() <= target) {
    redraws_.erase(redraws_.begin());
    ++changes_;
  }
}

/// What is due is due after as long as before.
void TimedReference::jump(Seconds distance) {
  clock_.jump(distance);
  if (nextSweep_)
    nextSweep_ = later(*nextSweep_, distance);
  std::multiset<Date> redraws;
  for (const Date redraw : redraws_)
    redraws.insert(later(redraw, distance));
  redraws_ = redraws;
}

std::size_t TimedReference::stalledCount() const {
  const auto& active = monitor_.active();
  return static_cast<std::size_t>(std::count_if(
      active.begin(), active.end(), [this](const auto& entry) { return isStalled(entry.second); }));
}

std::optional<double> TimedReference::longestStall() const {
  std::optional<double> longest;
  for (const auto& [path, item] : monitor_.active())
    if (isStalled(item))
      longest = std::max(longest.value_or(0), Seconds(clock_.now() - item.lastUpdate).count());
  return longest;
}

std::optional<double> TimedReference::progress() const {
  double sum = 0;
  double count = 0;
  for (const auto& [path, item] : monitor_.active()) {
    if (isStalled(item) || !item.percent)
      continue;
    sum += *item.percent;
    ++count;
  }
  return count > 0 ? std::optional(sum / count) : std::nullopt;
}

OverallState TimedReference::overall() const {
  bool uploads = false;
  bool downloads = false;
  for (const auto& [path, item] : monitor_.active())
    if (!isStalled(item))
      (item.direction == Direction::upload ? uploads : downloads) = true;
  if (uploads && downloads)
    return OverallState::both;
  if (uploads || downloads)
    return uploads ? OverallState::uploading : OverallState::downloading;
  if (!monitor_.active().empty() || !monitor_.issues().empty())
    return OverallState::attention;
  const auto& last = monitor_.lastFinished();
  if (last && clock_.now() < later(last->date, SyncMonitor::holdDuration))
    return last->kind == RecentKind::upload ? OverallState::uploading : OverallState::downloading;
  return OverallState::idle;
}

std::string difference(const SyncMonitor& monitor, const TimedReference& reference) {
  const ReferenceMonitor& expected = reference.monitor();
  if (std::string transfer = differentTransfer(monitor.active(), expected); !transfer.empty())
    return transfer;
  using Issues = std::map<std::string, std::string>;
  if (Issues(monitor.issues().begin(), monitor.issues().end()) !=
      Issues(expected.issues().begin(), expected.issues().end()))
    return "issues";
  const auto sameEvent = [](const CompletedItem& a, const CompletedItem& b) {
    return a.path == b.path && a.kind == b.kind && a.date == b.date;
  };
  if (!std::equal(monitor.recent().begin(), monitor.recent().end(), expected.recent().begin(),
                  expected.recent().end(), sameEvent))
    return "recent";
  if (monitor.stalledCount() != reference.stalledCount())
    return "the number of stalled transfers";
  if (monitor.longestStall() != reference.longestStall())
    return "the longest stall";
  if (!nearlyEqual(monitor.progress(), reference.progress()))
    return "the progress";
  if (monitor.overall() != reference.overall())
    return "the overall state";
  return "";
}

} // namespace driftmark::test
