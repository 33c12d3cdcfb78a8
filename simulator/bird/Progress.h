#pragma once

#include "scenario/Action.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

namespace icloud {

/// How far a story is, in terms that a later process understands too: the clock is the machine's.
struct Progress {
  using Clock = std::chrono::steady_clock;

  /// Another process went on when the story was at `at` and `next` events had happened.
  struct Restart {
    Milliseconds at{};
    std::size_t next = 0;

    bool operator==(const Restart&) const = default;
  };

  std::optional<Clock::time_point> origin; ///< absent: the story has not begun
  std::optional<Milliseconds> waitingAt;   ///< where the clock stands still
  std::size_t next = 0;                    ///< of the events, the first that has not happened
  std::vector<Restart> restarts;

  bool operator==(const Progress&) const = default;
};

} // namespace icloud
