#pragma once

#include "process/ChildProcess.h"

#include <chrono>
#include <stdexcept>
#include <string>

namespace driftmark::test {

/// How long a test waits for anything: much longer than it takes on a busy machine, and less than
/// ctest gives a test.
constexpr std::chrono::seconds maxWait{60};

/// What a wait throws when `maxWait` is over.
class TimedOut : public std::runtime_error {
public:
  explicit TimedOut(const std::string& event)
      : std::runtime_error("timed out waiting for " + event) {}
};

/// Waits until `descriptor` is readable. `event` says in words what that means. Throws TimedOut.
void awaitReadable(int descriptor, const std::string& event);

/// Waits until the child has ended; the status as `waitpid` gives it. Throws TimedOut.
int awaitExit(icloud::ChildProcess& child);

/// The same; how the child ended, as display text: "status 0".
std::string awaitEnd(icloud::ChildProcess& child);

} // namespace driftmark::test
