#include "Orphans.h"

#include <csignal>
#include <filesystem>
#include <fstream>

#include <sys/prctl.h>
#include <sys/wait.h>

namespace driftmark::test {

Orphans::Orphans() {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
}

Orphans::~Orphans() {
  prctl(PR_SET_CHILD_SUBREAPER, 0);
}

std::vector<int> Orphans::children() {
  std::vector<int> identifiers;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    std::ifstream list(task.path() / "children");
    for (int identifier = 0; list >> identifier;)
      identifiers.push_back(identifier);
  }
  return identifiers;
}

bool Orphans::end(int identifier) {
  kill(identifier, SIGKILL);
  int status = 0;
  return waitpid(identifier, &status, 0) == identifier && WIFSIGNALED(status) &&
         WTERMSIG(status) == SIGKILL;
}

} // namespace driftmark::test
