#pragma once

#include "Report.h"

#include <iosfwd>

namespace driftmark::bench {

/// Times a listing on its way through a real pseudo-terminal into the program, against a loop that
/// only reads. Needs a QCoreApplication.
void benchTerminal(Figures& figures, std::ostream& notes);

} // namespace driftmark::bench
