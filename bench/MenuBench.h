#pragma once

#include "Report.h"

#include <iosfwd>

namespace driftmark::bench {

/// Counts the redraws of the strip while lines arrive that change nothing shown, and measures how
/// long the menu takes to open during the listing of a large drive. Needs a QApplication.
void benchMenu(Figures& figures, std::ostream& notes);

} // namespace driftmark::bench
