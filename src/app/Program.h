#pragma once

#include "ports/Platform.h"

namespace driftmark {

/// The whole program: becomes an accessory application, ends older copies, turns SIGTERM and SIGINT
/// into the orderly end, and runs until the application ends. Returns the exit status. Main thread
/// only.
int runProgram(const Platform& platform);

} // namespace driftmark
