#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <sys/types.h>

namespace icloud {

/// A process whose parent ended before it.
struct Orphan {
  pid_t identifier = 0;
  std::string name;
  bool outlived = false; ///< it had to be killed
  int status = 0;        ///< as `waitpid` gives it
};

/// From now on this process becomes the parent of descendants that lose theirs.
void adoptOrphans();

/// Waits until every child but those of `known` has ended, kills what is left after `grace`, and
/// tells how each ended.
std::vector<Orphan> collectOrphans(const std::vector<pid_t>& known,
                                   std::chrono::milliseconds grace);

} // namespace icloud
