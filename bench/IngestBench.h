#pragma once

#include "Report.h"

#include <iosfwd>

namespace driftmark::bench {

/// Times the whole road from chunks to model on the corpus, against a newline scan and against the
/// straightforward monitor. Throws when the two monitors do not come to the same model.
void benchIngest(Figures& figures, std::ostream& notes);

/// Measures what a million known paths take of the heap.
void benchKnownState(Figures& figures, std::ostream& notes);

/// Times the answers that the icon needs with many transfers in flight.
void benchOverall(Figures& figures);

} // namespace driftmark::bench
