// How tests find and end processes whose parents have ended.

#include "harness/Orphans.h"

#include "process/ChildProcess.h"

#include <csignal>
#include <filesystem>
#include <fstream>

#include <sys/prctl.h>
#include <sys/wait.h>

namespace driftmark::test {

Orphans::Orphans() {
  icloud::adoptOrphans();
}

Orphans::~Orphans() {
  prctl(PR_SET_CHILD_SUBREAPER, 0);
}

std::vector<pid_t> Orphans::children() {
  std::vector<pid_t> identifiers;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    std::ifstream list(task.path() / "children");
    for (pid_t identifier = 0; list >> identifier;)
      identifiers.push_back(identifier);
  }
  return identifiers;
}

bool Orphans::end(pid_t child) {
  kill(child, SIGKILL);
  int status = 0;
  return waitpid(child, &status, 0) == child && WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

std::vector<std::string> Orphans::endAll(const std::vector<pid_t>& others,
                                         std::chrono::milliseconds limit) {
  std::vector<std::string> killed;
  for (const icloud::Orphan& orphan : icloud::collectOrphans(others, limit))
    if (orphan.wasKilled)
      killed.push_back(orphan.name);
  return killed;
}

} // namespace driftmark::test
