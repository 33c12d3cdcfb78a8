#pragma once

#include <string>

namespace driftmark {

class ChildProcesses;

/// Arranges that the application at `bundle` is opened half a second from now, when this process
/// has ended. A failure is ignored. The path is quoted but not escaped: one with a double quote in
/// it is not opened.
void relaunch(ChildProcesses& childProcesses, const std::string& bundle);

} // namespace driftmark
