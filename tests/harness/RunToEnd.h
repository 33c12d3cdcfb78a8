#pragma once

#include "process/ChildProcess.h"

#include <string>

namespace driftmark::test {

/// How a tool ended and what it wrote.
struct Finished {
  int exitStatus = -1; ///< -1 when a signal ended it
  std::string output;
  std::string error;
};

/// Runs a program to its end. Throws std::system_error when it cannot be started, and TimedOut.
Finished runToEnd(icloud::Launch launch);

} // namespace driftmark::test
