#pragma once

#include "Report.h"

#include <iosfwd>

namespace driftmark::bench {

/// Measures the program in a simulated iCloud where nothing happens: the cost of idling for half a
/// minute, and start time and memory relative to a bare QApplication. Takes more than a minute.
void benchProgram(Figures& figures, std::ostream& notes);

} // namespace driftmark::bench
