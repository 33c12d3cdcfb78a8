#pragma once

#include "ports/ChildProcesses.h"
#include "ports/PlatformError.h"
#include "support/Paths.h"

#include <string>
#include <string_view>
#include <system_error>

/// The system's error numbers as errors of the ports, described in the system's words. Any thread.
namespace driftmark {

/// The launch error for the error number `code`.
inline LaunchError launchError(LaunchError::Stage stage, int code) {
  return {stage, std::generic_category().message(code)};
}

/// The error of an operation on the item at `path`: "“NAME” couldn’t be moved: Permission denied".
/// `done` is the participle ("moved"), `code` the error number.
inline PlatformError fileError(std::string_view path, std::string_view done, int code) {
  return {std::string("“")
              .append(lastPathComponent(path))
              .append("” couldn’t be ")
              .append(done)
              .append(": ")
              .append(std::generic_category().message(code))};
}

} // namespace driftmark
