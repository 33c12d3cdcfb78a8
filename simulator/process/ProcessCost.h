#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

#include <sys/types.h>

namespace icloud {

/// What the threads of a process have used so far.
struct ProcessCost {
  std::uint64_t nanoseconds = 0;       ///< of processor time
  std::uint64_t voluntarySwitches = 0; ///< how often a thread began to wait
};

/// What a process holds at one moment.
struct ProcessHoldings {
  std::size_t memory = 0; ///< resident, in KiB
  std::size_t descriptors = 0;
  std::size_t threads = 0;
  std::size_t children = 0; ///< those that ended and were not waited for included
};

// These throw std::runtime_error when the process is gone.

/// Adds up all threads that live.
ProcessCost costOf(pid_t process);

ProcessHoldings holdingsOf(pid_t process);

/// Resident memory, in KiB.
double residentMemory(pid_t process);

/// The processor time of all threads so far, of those that ended too.
std::chrono::duration<double> processorTime(pid_t process);

/// How many bytes the process has read so far, from whatever source.
std::uint64_t bytesRead(pid_t process);

} // namespace icloud
