#pragma once

#include "ports/ChildProcesses.h"

#include <system_error>

namespace driftmark {

/// The launch error for the error number `code`, described in the system's words. Any thread.
inline LaunchError systemError(LaunchError::Stage stage, int code) {
  return {stage, std::generic_category().message(code)};
}

} // namespace driftmark
