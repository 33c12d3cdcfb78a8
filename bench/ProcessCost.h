#pragma once

#include <cstdint>

#include <sys/types.h>

namespace driftmark::bench {

/// What the threads of a process have used so far.
struct ProcessCost {
  std::uint64_t nanoseconds = 0;       ///< of processor time
  std::uint64_t voluntarySwitches = 0; ///< how often a thread began to wait
};

/// Adds up all threads that live. Throws std::runtime_error when the process is gone.
ProcessCost costOf(pid_t process);

/// Resident memory, in KiB. Throws std::runtime_error when the process is gone.
double residentMemory(pid_t process);

} // namespace driftmark::bench
