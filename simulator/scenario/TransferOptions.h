#pragma once

#include "scenario/Action.h"
#include "scenario/ScenarioLine.h"

namespace icloud {

/// Reads the rest of a line that begins a transfer.
void readTransferOptions(ScenarioLine& line, Transfer& transfer);

/// Refuses a transfer that takes no time, or more steps than can be wanted.
void checkPace(const ScenarioLine& line, Milliseconds duration, Milliseconds every);

} // namespace icloud
