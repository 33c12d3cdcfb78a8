#pragma once

#include "ports/Platform.h"

namespace driftmark {

/// The whole program: makes it an accessory application, ends older copies, turns SIGTERM and
/// SIGINT into an orderly quit, and runs until the application ends. Main thread only. Returns the
/// exit status.
int runProgram(const Platform& platform);

} // namespace driftmark
