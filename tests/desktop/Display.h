#pragma once

#include "harness/Channel.h"
#include "process/ChildProcess.h"

#include <string>

namespace driftmark::test {

/// An X display that exists in memory only.
class Display {
public:
  /// Waits until the display accepts programs. Throws std::runtime_error when it does not start.
  Display();
  Display(const Display&) = delete;
  Display& operator=(const Display&) = delete;
  ~Display();

  /// The value of DISPLAY for programs on this display.
  const std::string& name() const { return name_; }

  pid_t process() const { return server_.identifier(); }

  /// Ends the display. Its programs lose their connections.
  void close();

private:
  Channel output_ = Channel::pipe();
  icloud::ChildProcess server_;
  std::string name_;
};

} // namespace driftmark::test
