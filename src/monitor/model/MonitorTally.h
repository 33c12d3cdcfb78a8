#pragma once

#include <cstdint>

namespace driftmark {

/// What the per-item monitor's output came to so far, counted for diagnosis.
struct MonitorTally {
  std::uint64_t lines = 0;        ///< complete lines, those dropped included
  std::uint64_t invalidLines = 0; ///< dropped, not being UTF-8
  std::uint64_t itemLines = 0;    ///< lines about an item, hidden and trashed ones included
  std::uint64_t transfersStarted = 0;
  std::uint64_t transfersFinished = 0;
  std::uint64_t evictions = 0;
  std::uint64_t downloadsCancelled = 0;
  std::uint64_t issuesRaised = 0;
  std::uint64_t unrecognizedStates = 0; ///< distinct texts
};

} // namespace driftmark
