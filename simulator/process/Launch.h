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

  /// Variables that differ from those of this process; without a value: taken away.
  std::map<std::string, std::optional<std::string>> environment;

  int output = -1; ///< becomes standard output; -1: that of this process
  int error = -1;  ///< becomes standard error; -1: that of this process
};

/// A child that was started. It leads a process group of its own, so that a terminal's signals do
/// not reach it, and is asked to end when this process dies.
class ChildProcess {
public:
  /// Starts the program. Throws std::system_error when that fails.
  explicit ChildProcess(const Launch& launch);
  ChildProcess(ChildProcess&& other) noexcept;
  ChildProcess& operator=(ChildProcess&&) = delete;

  /// Kills the child when it still runs, and takes its remains away.
  ~ChildProcess();

  pid_t identifier() const { return identifier_; }

  /// Becomes readable when the child ends.
  int exitDescriptor() const { return exit_.get(); }

  void signal(int number) const;

  /// Waits for the end; the status as `waitpid` gives it.
  int wait();

  /// Asks the child to end, and kills it when it has not ended after `grace`.
  int end(std::chrono::milliseconds grace);
  bool hasEnded() const { return status_.has_value(); }

private:
  pid_t identifier_ = 0;
  Descriptor exit_;
  std::optional<int> status_;
};

/// How a child ended, for people: "status 0" or "signal 15 (Terminated)".
std::string describeEnd(int status);

/// Waits until a descriptor is readable; false when it is not after `limit`.
bool isReadableWithin(int descriptor, std::chrono::milliseconds limit);

/// The two ends of a pipe.
struct Pipe {
  Descriptor reading;
  Descriptor writing;
};

/// Opens a pipe whose ends close on exec.
Pipe makePipe();

/// A descriptor that becomes readable when the process ends; none when it is gone already.
Descriptor openProcess(pid_t process);

} // namespace icloud
