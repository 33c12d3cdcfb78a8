#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <sys/types.h>

namespace driftmark::test {

/// As long as this object lives, this process is the parent of the processes that its children
/// leave behind.
class Orphans {
public:
  Orphans();
  Orphans(const Orphans&) = delete;
  Orphans& operator=(const Orphans&) = delete;
  ~Orphans();

  /// The identifiers of all children of this process, adopted ones included.
  static std::vector<pid_t> children();

  /// Kills one child and reaps it. False when it had ended before.
  static bool end(pid_t child);

  /// Waits up to `limit` for the end of every child but `others`, then kills and reaps what is
  /// left. Returns the names of the processes it killed.
  static std::vector<std::string> endAll(const std::vector<pid_t>& others = {},
                                         std::chrono::milliseconds limit = {});
};

} // namespace driftmark::test
