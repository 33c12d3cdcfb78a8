#pragma once

#include "scenario/Scenario.h"

#include <cstddef>
#include <variant>
#include <vector>

namespace icloud {

/// Step number `step` of the scenario runs.
struct RunStep {
  std::size_t step = 0;
};

/// The transfer of step `step` makes progress.
struct TransferTick {
  std::size_t step = 0;
  double percent = 0;
};

/// The transfer of step `step` stalls, or moves again.
struct TransferPause {
  std::size_t step = 0;
  bool begins = true;
};

/// The transfer of step `step` finishes, is cancelled or vanishes.
struct TransferEnd {
  std::size_t step = 0;
};

/// The global transfer of step `step` reports `completed` bytes; all of them when it ends.
struct GlobalTick {
  std::size_t step = 0;
  std::uint64_t completed = 0;
};

/// Something that happens at one moment of a scenario.
struct TimelineEvent {
  Milliseconds at{};
  std::variant<RunStep, TransferTick, TransferPause, TransferEnd, GlobalTick> what;
};

/// The number of the step or transfer that an event belongs to.
std::size_t numberOf(const TimelineEvent& event);

/// Orders the events from number `first` on by their times. Those of one moment keep their order.
void sortByTime(std::vector<TimelineEvent>& events, std::size_t first = 0);

/// Appends the events of transfer number `step`, which begins at `begin` on the scenario's clock.
void addTransferEvents(std::vector<TimelineEvent>& events, std::size_t step, Milliseconds begin,
                       const Transfer& transfer);

/// All events of a scenario, in order of time.
std::vector<TimelineEvent> timelineOf(const Scenario& scenario);

} // namespace icloud
