#pragma once

#include "process/ProcessCost.h"

#include <cstddef>
#include <string>
#include <vector>

namespace driftmark::soak {

/// The figures of one interval from the samples taken in it, of which there is at least one: the
/// most memory; and of descriptors, threads and children the most that was held in `steady` samples
/// in a row, so that a tool that runs for a moment does not count.
icloud::ProcessHoldings figuresOf(const std::vector<icloud::ProcessHoldings>& samples,
                                  std::size_t steady);

/// What a run has shown. The two maxima are those of the first and of the last third.
struct Judgement {
  icloud::ProcessHoldings first;
  icloud::ProcessHoldings last;
  std::vector<std::string> complaints; ///< one sentence each; none: nothing grows
};

/// Compares the figures of the intervals after the warm-up. Descriptors, threads and children have
/// to be equal; memory may grow by 2 % or by 1 MiB. Fewer than three intervals are a complaint.
Judgement judge(const std::vector<icloud::ProcessHoldings>& figures);

} // namespace driftmark::soak
