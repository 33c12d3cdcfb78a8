#pragma once

#include "scenario/ScenarioLine.h"
#include "scenario/UserStep.h"

namespace icloud {

/// Reads what a line of a scenario tells the user to do, its verb first.
UserAction readUserAction(ScenarioLine& line);

} // namespace icloud
