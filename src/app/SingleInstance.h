#pragma once

#include "ports/Clock.h"
#include "ports/Platform.h"

namespace driftmark {

/// Sees to it that no other copy of the program keeps running: a newcomer ends the older ones.
class SingleInstance {
public:
  SingleInstance() = delete;

  /// Asks the older copies to end, waits for that, and kills those that do not. Blocks for
  /// `gracePeriod` and a pollInterval at most. Does nothing for a program without a bundle
  /// identifier. Main thread only.
  static void takeOver(const Platform& platform);

  static constexpr Seconds gracePeriod{3.0};
  static constexpr Seconds pollInterval{0.05}; ///< between two looks at the older copies
};

} // namespace driftmark
