#pragma once

#include "scenario/PersonStep.h"
#include "scenario/ScenarioLine.h"

namespace icloud {

/// Reads what a line of a scenario tells the person to do, its verb first.
PersonAct readPersonAct(ScenarioLine& line);

} // namespace icloud
