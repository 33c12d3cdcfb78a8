#pragma once

#include <vector>

namespace driftmark::test {

/// Makes this process, as long as this object lives, the parent of the processes that its children
/// leave behind.
class Orphans {
public:
  Orphans();
  Orphans(const Orphans&) = delete;
  Orphans& operator=(const Orphans&) = delete;
  ~Orphans();

  /// The identifiers of all children of this process, those that were left behind among them.
  static std::vector<int> children();

  /// Ends a process that was left behind, and reaps it. False when it had ended before.
  static bool end(int identifier);
};

} // namespace driftmark::test
