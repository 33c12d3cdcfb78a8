#pragma once

#include "ports/Clock.h"
#include "ports/Platform.h"

/// Ensures that one copy of the program keeps running: a new instance ends those that did not start
/// after it.
namespace driftmark::SingleInstance {

inline constexpr Seconds gracePeriod{3.0};   ///< for the older copies to end on request
inline constexpr Seconds pollInterval{0.05}; ///< between two checks whether they have ended

/// Asks the older copies to end, in the order of `RunningApplications`, waits for that, and kills
/// those that still run. Blocks for `gracePeriod` plus one `pollInterval` at most. Does nothing for
/// a program without a bundle identifier. Main thread only.
void takeOver(const Platform& platform);

} // namespace driftmark::SingleInstance
