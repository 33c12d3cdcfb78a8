#pragma once

#include <chrono>
#include <functional>

namespace driftmark::test {

/// Runs the Qt event loop until `done` is true, and checks that after each event. When `maxWait` is
/// over it fails the test at the caller's line and returns false.
bool runUntil(const std::function<bool()>& done, const char* file = __builtin_FILE(),
              int line = __builtin_LINE());

/// The same for a condition that becomes true without an event of this thread: checks it every
/// millisecond.
bool pollUntil(const std::function<bool()>& done, const char* file = __builtin_FILE(),
               int line = __builtin_LINE());

/// Runs the Qt event loop for at least `duration`.
void runFor(std::chrono::duration<double> duration);

} // namespace driftmark::test
