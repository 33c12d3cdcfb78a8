#include "common/SignalDescriptor.h"

#include "common/SystemFailure.h"

#include <csignal>

#include <sys/signalfd.h>

namespace icloud {

Descriptor signalDescriptor(std::initializer_list<int> numbers) {
  sigset_t set;
  sigemptyset(&set);
  for (const int number : numbers)
    sigaddset(&set, number);
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
  Descriptor signals(signalfd(-1, &set, SFD_CLOEXEC));
  if (!signals)
    throwSystemFailure("cannot wait for signals");
  return signals;
}

} // namespace icloud
