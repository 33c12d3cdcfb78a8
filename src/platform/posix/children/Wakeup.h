#pragma once

#include "platform/posix/SystemCalls.h"

#include <atomic>

namespace driftmark {

/// Wakes one thread out of `poll`.
class Wakeup {
public:
  /// Throws std::system_error when the system has no descriptors left.
  Wakeup();

  /// Makes `descriptor` readable. Any thread.
  void wake();

  /// What the thread polls. That thread only.
  int descriptor() const { return pipe_.readEnd.number(); }

  /// Forgets the wake-ups so far. What was changed before any of them is visible after this call.
  /// The polling thread only.
  void clear();

private:
  system_calls::Pipe pipe_;
  std::atomic<bool> pending_ = false;
};

} // namespace driftmark
