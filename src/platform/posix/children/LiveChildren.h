#pragma once

#include <sys/types.h>

/// The children of this process that are not reaped yet, for the moment when it crashes. Nothing
/// here takes a lock or allocates memory, so that a signal handler may call it. Any thread.
namespace driftmark::LiveChildren {

/// How many children are recorded at a time; a crash leaves those beyond it.
inline constexpr int maxCount = 256;

/// As long as this object lives, a child is being started, and `killAll` waits for it.
class Launch {
public:
  Launch();
  Launch(const Launch&) = delete;
  Launch& operator=(const Launch&) = delete;
  ~Launch();

  /// False once `killAll` has begun: no child is to be started.
  static bool isAllowed();
};

/// Records a child that was just started, during its launch.
void add(pid_t child);

void remove(pid_t child);

/// Prevents further launches and sends SIGKILL to every child. Waits up to a second for the
/// launches of other threads.
void killAll();

} // namespace driftmark::LiveChildren
