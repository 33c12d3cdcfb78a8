#pragma once

#include "Report.h"

#include <iosfwd>

namespace driftmark::bench {

/// Times the survey of a large folder against `find`, counts what it keeps in memory, and measures
/// how long the main loop stands still while the user's choice of that folder is carried out. Needs
/// a QApplication.
void benchSurvey(Figures& figures, std::ostream& notes);

} // namespace driftmark::bench
