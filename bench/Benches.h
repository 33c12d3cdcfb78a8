#pragma once

#include "Report.h"

#include <iosfwd>

namespace driftmark::bench {

// Each adds its figures under the keys of the report, and prints notes on what it measured. All but
// those of IngestBench.cpp and StatusBench.cpp need a QApplication. They throw a std::exception
// when the program under measurement does something wrong.

// IngestBench.cpp

/// Times the path from chunks to the model on the corpus, against a newline scan and against the
/// reference monitor. Throws when the two monitors do not arrive at the same model.
void benchIngest(Figures& figures, std::ostream& notes);

/// Measures the heap that a million known paths take.
void benchKnownState(Figures& figures, std::ostream& notes);

/// Times a progress line and the answers that the icon needs after it, with few and with many
/// transfers in flight.
void benchEvents(Figures& figures, std::ostream& notes);

// DelayBench.cpp

/// Times many delayed tasks on the program's main queue: adding, running and dropping them.
void benchDelays(Figures& figures, std::ostream& notes);

// StatusBench.cpp

/// Times the reading of a status report with few and with many directories.
void benchStatus(Figures& figures, std::ostream& notes);

// TerminalBench.cpp

/// Times a listing that passes through a real pseudo-terminal into the program, against a loop that
/// only reads.
void benchTerminal(Figures& figures, std::ostream& notes);

// MenuBench.cpp

/// Counts the redraws of the strip while lines arrive that change nothing displayed, and measures
/// how long the menu takes to open during the listing of a large drive, and to be built while many
/// transfers are in flight.
void benchMenu(Figures& figures, std::ostream& notes);

// SurveyBench.cpp

/// Times the survey of a large folder against `find`, counts what it keeps in memory, and measures
/// how long the main loop is blocked after the user has chosen that folder.
void benchSurvey(Figures& figures, std::ostream& notes);

// ProgramBench.cpp

/// Measures the program in a simulated iCloud where nothing happens: the cost of idling for half a
/// minute, and start time and memory relative to a bare QApplication. Takes more than a minute.
void benchProgram(Figures& figures, std::ostream& notes);

} // namespace driftmark::bench
