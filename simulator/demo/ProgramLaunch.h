#pragma once

#include "demo/DemoOptions.h"
#include "demo/Sandbox.h"
#include "process/Launch.h"
#include "scenario/Scenario.h"

namespace icloud {

/// How the program is to be started in a world: out of a copy of its bundle in /Applications, when
/// it lies in one; on the display of whoever plays, or else with a screen that is only in memory.
/// Prepares the world for that. Throws std::exception.
Launch programLaunch(const DemoOptions& options, const Scenario& scenario, const Sandbox& sandbox);

} // namespace icloud
