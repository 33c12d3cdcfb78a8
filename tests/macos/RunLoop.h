#pragma once

#include "ports/Clock.h"

#include <functional>

namespace driftmark::test {

/// Runs the main run loop until `done` is true, which is checked after each event and every few
/// milliseconds. After a minute it fails the test at the caller's line and returns false. Main
/// thread only.
bool runUntil(const std::function<bool()>& done, const char* file = __builtin_FILE(),
              int line = __builtin_LINE());

/// Runs the main run loop for at least `duration`. Main thread only.
void runFor(Seconds duration);

} // namespace driftmark::test
