#pragma once

#include "ports/ChildProcesses.h"

#include <string>

namespace driftmark {

/// Opens the application at `bundle` half a second from now, after this process has ended. A
/// failure is ignored. The path is quoted but not escaped: a path that contains a double quote is
/// not opened.
inline void relaunch(ChildProcesses& childProcesses, const std::string& bundle) {
  static_cast<void>(childProcesses.launchDetached(
      {"/bin/sh", {"-c", "sleep 0.5; /usr/bin/open \"" + bundle + "\""}}));
}

} // namespace driftmark
