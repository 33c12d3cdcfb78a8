#pragma once

#include "ports/Clock.h"

#include <functional>

namespace driftmark::test {

/// Runs the Qt event loop until `done`, looking again after each event; false when a generous
/// deadline passes first.
bool runUntil(const std::function<bool()>& done);

/// The same for what becomes true without an event of this thread.
bool pollUntil(const std::function<bool()>& done);

/// Runs the Qt event loop for at least `duration`.
void runFor(Seconds duration);

} // namespace driftmark::test
