#pragma once

#include "ports/ChildProcesses.h"

#include <variant>

#include <sys/types.h>

namespace driftmark {

/// Where the output of a launched tool goes: to a descriptor of this process, or to the null
/// device.
struct OutputRouting {
  static constexpr int nullDevice = -1; ///< the number of a `FileDescriptor` that is not open
  int standardOutput = nullDevice;
  int standardError = nullDevice;
};

/// The session that a launched tool belongs to.
enum class Session {
  ofThisProcess,
  ofItsOwn, ///< the end of this process or of its terminal does not affect the tool
};

/// Starts the tool at the absolute path `executable` with the environment and working directory of
/// this process, the null device as standard input, default signal handling, no blocked signals,
/// and no descriptor beyond the three standard ones. The caller owns the child and has to reap it.
/// Any thread.
std::variant<pid_t, LaunchError> launchTool(const std::string& executable,
                                            const std::vector<std::string>& arguments,
                                            OutputRouting output,
                                            Session session = Session::ofThisProcess);

} // namespace driftmark
