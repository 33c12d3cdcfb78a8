#pragma once

#include "monitor/SyncMonitor.h"
#include "ports/Platform.h"

#include <iosfwd>

namespace driftmark {

/// Prints what the monitor read of a capture: the counts, then the model. The same capture gives
/// the same text.
void printReport(std::ostream& out, const SyncMonitor& monitor, const SyncMonitor::Ports& platform);

} // namespace driftmark
