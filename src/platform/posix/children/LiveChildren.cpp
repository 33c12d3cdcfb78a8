// How the children of a crashing process are recorded and killed without a lock.

#include "platform/posix/children/LiveChildren.h"

#include <array>
#include <atomic>
#include <csignal>
#include <ctime>

namespace driftmark::LiveChildren {

namespace {

constexpr pid_t none = 0;

std::array<std::atomic<pid_t>, maxCount> children;
std::atomic<int> launches = 0;
std::atomic<bool> crashed = false;
static_assert(std::atomic<pid_t>::is_always_lock_free, "a signal handler reads them");

/// Replaces one occurrence of `from`.
void replace(pid_t from, pid_t to) {
  for (std::atomic<pid_t>& each : children) {
    pid_t expected = from;
    if (each.compare_exchange_strong(expected, to))
      return;
  }
}

} // namespace

Launch::Launch() {
  ++launches;
}

Launch::~Launch() {
  --launches;
}

bool Launch::isAllowed() {
  return !crashed;
}

void add(pid_t child) {
  replace(none, child);
}

void remove(pid_t child) {
  replace(child, none);
}

void killAll() {
  crashed = true;
  constexpr timespec pause{0, 1'000'000};
  for (int pauses = 0; launches > 0 && pauses < 1000; ++pauses)
    nanosleep(&pause, nullptr);
  for (const std::atomic<pid_t>& each : children)
    if (const pid_t child = each; child != none)
      ::kill(child, SIGKILL);
}

} // namespace driftmark::LiveChildren
