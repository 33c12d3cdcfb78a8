#include "install/Relaunch.h"

#include "ports/ChildProcesses.h"

namespace driftmark {

void relaunch(ChildProcesses& childProcesses, const std::string& bundle) {
  static_cast<void>(childProcesses.launchDetached(
      {"/bin/sh", {"-c", "sleep 0.5; /usr/bin/open \"" + bundle + "\""}}));
}

} // namespace driftmark
