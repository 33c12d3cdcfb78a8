// Which transfers are in flight, which of them are stalled, and what they come to together.

#include "monitor/Transfers.h"

#include <cmath>
#include <string>
#include <utility>

namespace driftmark {

namespace {

/// The percentage in millionths of a percent; absent when it is no whole number of them, or so
/// large that many could overflow a sum.
std::optional<std::int64_t> millionthsOf(double percent) {
  constexpr double scale = 1e6;
  constexpr double maxPercent = 1e6;
  if (!(percent >= 0 && percent <= maxPercent))
    return std::nullopt;
  const std::int64_t millionths = std::llround(percent * scale);
  if (static_cast<double>(millionths) / scale != percent)
    return std::nullopt;
  return millionths;
}

Seconds age(const ActiveItem& item, Date now) {
  return now - item.lastUpdate;
}

} // namespace

void Transfers::Live::count(const Entry& entry, int sign) {
  (entry.direction == Direction::upload ? uploads : downloads) += sign;
  if (!entry.percent)
    return;
  measured += sign;
  millionths += sign * entry.millionths.value_or(0);
  uncountable += entry.millionths ? 0 : sign;
}

void Transfers::add(ActiveItem item) {
  const auto millionths = item.percent ? millionthsOf(*item.percent) : std::nullopt;
  const auto added = items_.insert({std::move(item), millionths, ++lastNumber_});
  byPath_.emplace(added->path, added);
  byArrival_.emplace_hint(byArrival_.end(), added->number, added);
}

void Transfers::change(List::Iterator entry, Direction direction, std::optional<double> percent,
                       Date now) {
  items_.update(entry, [&](Entry& changed) {
    changed.direction = direction;
    changed.percent = percent;
    changed.millionths = percent ? millionthsOf(*percent) : std::nullopt;
    changed.lastUpdate = now;
  });
}

ActiveItem Transfers::take(ByPath::iterator found) {
  const auto entry = found->second;
  byPath_.erase(found);
  byArrival_.erase(entry->number);
  ActiveItem item = std::move(*entry);
  items_.erase(entry);
  return item;
}

void Transfers::restartClocks(Date now) {
  for (const auto& [number, entry] : byArrival_)
    items_.update(entry, [&](Entry& changed) { changed.lastUpdate = now; });
}

bool Transfers::isStalled(const ActiveItem& item, Date now) const {
  return age(item, now) > stalledAfter_;
}

std::size_t Transfers::stalledCount(Date now) const {
  live(now);
  return items_.oldCount();
}

const Transfers::Live& Transfers::live(Date now) const {
  items_.moveBorder([&](const Entry& entry) { return isStalled(entry, now); });
  return items_.recent();
}

std::optional<double> Transfers::progress(Date now) const {
  const Live& totals = live(now);
  if (totals.measured == 0)
    return std::nullopt;
  double sum = static_cast<double>(totals.millionths) / 1e6;
  if (totals.uncountable > 0) {
    sum = 0;
    for (auto item = items_.firstRecent(); item != items_.entries().end(); ++item)
      sum += item->percent.value_or(0);
  }
  return sum / static_cast<double>(totals.measured);
}

std::optional<double> Transfers::longestStall(Date now) const {
  if (empty())
    return std::nullopt;
  const ActiveItem& oldest = items_.entries().front();
  return isStalled(oldest, now) ? std::optional(age(oldest, now).count()) : std::nullopt;
}

void Transfers::beginSweep() {
  sweptTo_ = 0;
  sweepEnd_ = lastNumber_;
}

const ActiveItem* Transfers::nextInSweep() {
  const auto next = byArrival_.upper_bound(sweptTo_);
  if (next == byArrival_.end() || next->first > sweepEnd_)
    return nullptr;
  sweptTo_ = next->first;
  return &*next->second;
}

} // namespace driftmark
