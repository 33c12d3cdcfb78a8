#pragma once

#include "harness/Channel.h"
#include "process/ChildProcess.h"

#include <string>

namespace driftmark::test {

/// A display of its own, drawn in memory alone.
class Display {
public:
  /// Waits until it can be used. Throws std::runtime_error when it does not come up.
  Display();
  Display(const Display&) = delete;
  Display& operator=(const Display&) = delete;
  ~Display();

  /// What DISPLAY says to a program that is to appear here.
  const std::string& name() const { return name_; }

  pid_t process() const { return server_.identifier(); }

  /// Closes the display under its programs.
  void close();

private:
  Channel output_ = Channel::pipe();
  icloud::ChildProcess server_;
  std::string name_;
};

} // namespace driftmark::test
