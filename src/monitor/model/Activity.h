#pragma once

#include <cstdint>

namespace driftmark {

/// The transfers that the global feed reported lately.
struct GlobalActivity {
  int count = 0;          ///< transfers, at least 1
  std::int64_t bytes = 0; ///< sum of their totals

  bool operator==(const GlobalActivity&) const = default;
};

/// Counts over the per-item monitor's output so far, for diagnosis.
struct MonitorTally {
  std::uint64_t lines = 0;        ///< complete lines, dropped ones included
  std::uint64_t invalidLines = 0; ///< dropped because they are not UTF-8
  std::uint64_t itemLines = 0;    ///< lines about an item, hidden and trashed ones included
  std::uint64_t transfersStarted = 0;
  std::uint64_t transfersFinished = 0;
  std::uint64_t evictions = 0;
  std::uint64_t downloadsCancelled = 0;
  std::uint64_t issuesRaised = 0;
  std::uint64_t unrecognizedStates = 0; ///< distinct texts
};

} // namespace driftmark
