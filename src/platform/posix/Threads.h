#pragma once

#include "platform/posix/SystemCalls.h"

#include <atomic>
#include <csignal>

namespace driftmark {

/// While this object lives, threads that the calling thread starts have all signals blocked.
class SignalsBlocked {
public:
  SignalsBlocked() {
    sigset_t all{};
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
  sigset_t before_{};
};

/// Wakes one thread that waits in `poll`.
class Wakeup {
public:
  /// Throws std::system_error when the system has no descriptors left.
  Wakeup();

  /// Makes `descriptor` readable. Any thread.
  void wake();

  /// The descriptor to poll. The polling thread only.
  int descriptor() const { return pipe_.readEnd.number(); }

  /// Resets all wake-ups so far. Changes made before any of them are visible after this call. The
  /// polling thread only.
  void clear();

private:
  Pipe pipe_;
  std::atomic<bool> pending_ = false;
};

} // namespace driftmark
