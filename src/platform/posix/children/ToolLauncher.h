#pragma once

#include "ports/ChildProcesses.h"

#include <variant>

#include <sys/types.h>

namespace driftmark {

/// Where the output of a launched tool goes: a descriptor of this process, or the null device.
struct OutputRouting {
  static constexpr int nullDevice = -1; ///< the number of a `FileDescriptor` that is not open
  int standardOutput = nullDevice;
  int standardError = nullDevice;
};

/// The session that a launched tool belongs to.
enum class Session {
  ofThisProcess,
  ofItsOwn, ///< the end of this process and of its terminal does not reach the tool
};

/// Starts the tool at the absolute path `executable` with the environment and working directory of
/// this process, the null device as standard input, default signal handling, nothing blocked, and
/// no descriptor beyond the three standard ones. The caller owns the child from then on. Any
/// thread.
std::variant<pid_t, LaunchError> launchTool(const std::string& executable,
                                            const std::vector<std::string>& arguments,
                                            OutputRouting output,
                                            Session session = Session::ofThisProcess);

} // namespace driftmark
