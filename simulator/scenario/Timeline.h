#pragma once

#include "scenario/Scenario.h"

#include <cstddef>
#include <variant>
#include <vector>

namespace icloud {

/// Does what line `step` of the story says.
struct RunStep {
  std::size_t step = 0;
};

/// A transfer that line `step` began moves on.
struct TransferTick {
  std::size_t step = 0;
  double percent = 0;
};

/// The transfer of line `step` stops moving, or moves again.
struct TransferPause {
  std::size_t step = 0;
  bool begins = true;
};

/// The transfer of line `step` ends in its way.
struct TransferEnd {
  std::size_t step = 0;
};

/// The global transfer of line `step` reports `completed` bytes; all of them when it ends.
struct GlobalTick {
  std::size_t step = 0;
  std::uint64_t completed = 0;
};

/// Something that happens on its own at one moment of the story.
struct TimelineEvent {
  Milliseconds at{};
  std::variant<RunStep, TransferTick, TransferPause, TransferEnd, GlobalTick> what;
};

/// Appends what happens in a transfer that begins at a moment of the story; its number is `step`.
void addTransferEvents(std::vector<TimelineEvent>& events, std::size_t step, Milliseconds begin,
                       const Transfer& transfer);

/// Everything that happens in a story, in order of time.
std::vector<TimelineEvent> timelineOf(const Scenario& scenario);

} // namespace icloud
