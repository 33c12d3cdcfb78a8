#pragma once

#include "harness/Channel.h"
#include "process/ChildProcess.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace driftmark::test {

/// A program that a test started, and its standard error. Killed when this object is destroyed.
struct RunningProgram {
  /// Throws std::system_error when the program cannot be started.
  explicit RunningProgram(const std::filesystem::path& executable)
      : RunningProgram(icloud::Launch{executable, {}, {}}) {}
  explicit RunningProgram(icloud::Launch launch);

  void send(int signal) const { process.signal(signal); }

  /// The path that the program has open as `number`.
  std::string descriptor(const std::string& number) const;

  /// From now on the program can have `bytes` more memory than it has, and no more.
  void limitMemory(std::size_t bytes) const;

  /// Waits for `text` in the log; false when the program ends without it. Throws TimedOut.
  bool says(const std::string& text);

  /// Waits for the end. The exit status; absent when a signal ended the program. Throws TimedOut.
  std::optional<int> exitStatus();

  /// The log so far.
  const std::string& errors() { return log.readSoFar(); }

  Channel log = Channel::pipe();
  icloud::ChildProcess process;
};

} // namespace driftmark::test
