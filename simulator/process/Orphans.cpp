#include "process/Orphans.h"

#include "process/Launch.h"

#include <algorithm>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <fstream>

#include <sys/prctl.h>
#include <sys/wait.h>

namespace icloud {
namespace {

struct Found {
  pid_t parent = 0;
  std::string name;
};

// The second field of a stat file is the name in parentheses, the fourth the parent. The process
// may be gone by the time it is read: then nothing is found.
Found readStat(const std::filesystem::path& folder) {
  std::ifstream stream(folder / "stat");
  std::string text(4096, '\0');
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(stream.gcount()));
  const auto open = text.find('(');
  const auto close = text.rfind(')');
  Found found;
  if (open == std::string::npos || close == std::string::npos || close + 4 > text.size())
    return found;
  found.name = text.substr(open + 1, close - open - 1);
  std::from_chars(text.data() + close + 4, text.data() + text.size(), found.parent);
  return found;
}

std::vector<Orphan> childrenExcept(const std::vector<pid_t>& known) {
  std::vector<Orphan> children;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    pid_t identifier = 0;
    const auto parsed = std::from_chars(name.data(), name.data() + name.size(), identifier);
    if (parsed.ec != std::errc{} || parsed.ptr != name.data() + name.size() ||
        std::find(known.begin(), known.end(), identifier) != known.end())
      continue;
    const Found found = readStat(entry.path());
    if (found.parent == getpid())
      children.push_back({identifier, found.name});
  }
  return children;
}

} // namespace

void adoptOrphans() {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
}

std::vector<Orphan> collectOrphans(const std::vector<pid_t>& known,
                                   std::chrono::milliseconds grace) {
  const auto deadline = std::chrono::steady_clock::now() + grace;
  std::vector<Orphan> collected;
  while (true) {
    auto children = childrenExcept(known);
    if (children.empty())
      return collected;
    for (Orphan& orphan : children) {
      const Descriptor exit = openProcess(orphan.identifier);
      const auto left =
          std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
      orphan.outlived = !isReadableWithin(exit.get(), left);
      if (orphan.outlived)
        kill(orphan.identifier, SIGKILL);
      waitpid(orphan.identifier, &orphan.status, 0);
      collected.push_back(std::move(orphan));
    }
  }
}

} // namespace icloud
