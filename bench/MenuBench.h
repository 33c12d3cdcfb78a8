#pragma once

#include "Report.h"

#include <iosfwd>

namespace driftmark::bench {

/// Counts the drawings of the strip while lines arrive that change nothing shown, and times the
/// opening of the menu while a large drive is listed. Needs a QApplication.
void benchMenu(Figures& figures, std::ostream& notes);

} // namespace driftmark::bench
