#pragma once

#include "platform/posix/FileDescriptor.h"

#include <optional>
#include <string>

#include <QSocketNotifier>

namespace driftmark::test {

/// A program as a child of the test, with its standard error kept. Killed with this object.
class RunningProgram {
public:
  /// Throws std::runtime_error when the program cannot be started.
  explicit RunningProgram(const std::string& executable);
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;
  ~RunningProgram();

  void send(int signal) const;

  /// What the program has open as `number`.
  std::string descriptor(const std::string& number) const;

  /// Waits for `text` on standard error; false when the program ends without having written it.
  bool says(const std::string& text);

  /// Waits for the program's end. The exit status; absent when a signal ended it.
  std::optional<int> exitStatus();

  /// Everything on standard error so far.
  const std::string& errors() const { return errors_; }

private:
  void readErrors();
  bool hasSaid(const std::string& text) const { return errors_.find(text) != std::string::npos; }

  int pid_ = 0;
  bool reaped_ = false;
  bool atEnd_ = false;
  std::string errors_;
  FileDescriptor errorPipe_;
  std::optional<QSocketNotifier> notifier_;
};

} // namespace driftmark::test
