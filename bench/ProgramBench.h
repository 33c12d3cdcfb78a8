#pragma once

#include "Report.h"

#include <iosfwd>

namespace driftmark::bench {

/// Measures the program as people run it, on a simulated iCloud where nothing happens: what half a
/// minute of idling costs, and start and memory against a program that is nothing but a
/// QApplication. Takes more than a minute.
void benchProgram(Figures& figures, std::ostream& notes);

} // namespace driftmark::bench
