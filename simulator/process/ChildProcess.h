#pragma once

#include "common/Descriptor.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace icloud {

/// A program to start. Standard input is the null device.
struct Launch {
  std::filesystem::path program;
  std::vector<std::string> arguments;

  /// Variables that differ from those of this process. A variable without a value is removed.
  std::map<std::string, std::optional<std::string>> environment;

  int output = -1; ///< becomes standard output; -1: that of this process
  int error = -1;  ///< becomes standard error; -1: that of this process
};

/// A child process. It leads a process group of its own, so that a terminal's signals do not reach
/// it, and gets SIGTERM when this process dies.
class ChildProcess {
public:
  /// Starts the program. Throws std::system_error when that fails.
  explicit ChildProcess(const Launch& launch);
  ChildProcess(ChildProcess&& other) noexcept;
  ChildProcess& operator=(ChildProcess&&) = delete;

  /// Kills the child if it still runs, and reaps it.
  ~ChildProcess();

  pid_t identifier() const { return identifier_; }

  /// Becomes readable when the child ends.
  int exitDescriptor() const { return exit_.get(); }

  void signal(int number) const;

  /// Waits for the end. Returns the status as `waitpid` does.
  int wait();

  /// Sends SIGTERM, then SIGKILL if the child still runs after `gracePeriod`. Returns the status as
  /// `waitpid` does.
  int end(std::chrono::milliseconds gracePeriod);
  bool hasEnded() const { return status_.has_value(); }

private:
  pid_t identifier_ = 0;
  Descriptor exit_;
  std::optional<int> status_;
};

/// How a child ended, as display text: "status 0" or "signal 15 (Terminated)".
std::string describeEnd(int status);

/// A descriptor that becomes readable when the process ends; invalid when the process no longer
/// exists.
Descriptor openProcess(pid_t process);

/// The children of a process, including those that ended and were not waited for.
std::vector<pid_t> childrenOf(pid_t parent);

/// A process whose parent ended before it.
struct Orphan {
  pid_t identifier = 0;
  std::string name;
  bool wasKilled = false; ///< it still ran after the grace period
  int status = 0;         ///< as `waitpid` returns it
};

/// From now on this process becomes the parent of descendants that lose theirs.
void adoptOrphans();

/// Waits until every child except `known` has ended. Kills those that still run after
/// `gracePeriod`. Returns how each ended.
std::vector<Orphan> collectOrphans(const std::vector<pid_t>& known,
                                   std::chrono::milliseconds gracePeriod);

} // namespace icloud
