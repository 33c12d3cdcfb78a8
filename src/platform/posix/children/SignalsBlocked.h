#pragma once

#include <csignal>

namespace driftmark {

/// Keeps all signals from the threads that the calling thread starts while this object lives.
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

} // namespace driftmark
