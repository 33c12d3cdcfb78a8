// When transfers report, stall and end.
#include "scenario/Timeline.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace icloud {
namespace {

using Events = std::vector<TimelineEvent>;

Milliseconds partOf(Milliseconds whole, double percent) {
  return Milliseconds(std::llround(static_cast<double>(whole.count()) * percent / 100));
}

double percentOf(Milliseconds part, Milliseconds whole) {
  return 100 * static_cast<double>(part.count()) / static_cast<double>(whole.count());
}

// The moving time of a transfer at each of its reports.
std::set<Milliseconds> reportsOf(const Transfer& transfer, Milliseconds end) {
  std::set<Milliseconds> reports;
  for (Milliseconds moved{}; moved < end; moved += transfer.every)
    reports.insert(moved);
  if (transfer.stall)
    reports.insert(partOf(transfer.duration, transfer.stall->percent));
  return reports;
}

void addGlobal(Events& events, std::size_t step, Milliseconds begin,
               const GlobalTransfer& transfer) {
  for (Milliseconds moved{}; moved < transfer.duration; moved += transfer.every) {
    const double share = percentOf(moved, transfer.duration) / 100;
    const auto completed = std::floor(static_cast<double>(transfer.bytes) * share);
    events.push_back({begin + moved, GlobalTick{step, static_cast<std::uint64_t>(completed)}});
  }
  events.push_back({begin + transfer.duration, GlobalTick{step, transfer.bytes}});
}

} // namespace

std::size_t numberOf(const TimelineEvent& event) {
  return std::visit([](const auto& what) { return what.step; }, event.what);
}

void sortByTime(Events& events, std::size_t first) {
  std::stable_sort(events.begin() + static_cast<std::ptrdiff_t>(first), events.end(),
                   [](const auto& left, const auto& right) { return left.at < right.at; });
}

void addTransferEvents(Events& events, std::size_t step, Milliseconds begin,
                       const Transfer& transfer) {
  const Milliseconds end = partOf(transfer.duration, transfer.endsAt);
  Milliseconds standstill{};
  for (const Milliseconds moved : reportsOf(transfer, end)) {
    const TransferTick tick{step, percentOf(moved, transfer.duration)};
    events.push_back({begin + moved + standstill, tick});
    if (!transfer.stall || moved != partOf(transfer.duration, transfer.stall->percent))
      continue;
    events.push_back({begin + moved, TransferPause{step, true}});
    standstill = transfer.stall->duration;
    events.push_back({begin + moved + standstill, TransferPause{step, false}});
    events.push_back({begin + moved + standstill, tick});
  }
  events.push_back({begin + end + standstill, TransferEnd{step}});
}

std::vector<TimelineEvent> timelineOf(const Scenario& scenario) {
  Events events;
  for (std::size_t index = 0; index < scenario.steps.size(); ++index) {
    const Step& step = scenario.steps[index];
    const Milliseconds at = step.at.value_or(Milliseconds{});
    events.push_back({at, RunStep{index}});
    if (const auto* transfer = std::get_if<Transfer>(&step.action))
      addTransferEvents(events, index, at, *transfer);
    else if (const auto* global = std::get_if<GlobalTransfer>(&step.action))
      addGlobal(events, index, at, *global);
  }
  sortByTime(events);
  return events;
}

} // namespace icloud
