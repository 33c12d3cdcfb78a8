#pragma once

#include "common/Descriptor.h"
#include "common/SystemRoot.h"
#include "process/ChildProcess.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace icloud {

/// Keeps the daemon running.
class Supervisor {
public:
  /// `arguments` are the daemon's.
  Supervisor(const SystemRoot& root, std::vector<std::string> arguments);

  /// Runs the daemon, and another one that goes on with the story whenever it ends, until SIGTERM
  /// or SIGINT ends it and this. Returns the exit status: 0, or the daemon's own when the first one
  /// fails before it serves.
  int run();

private:
  void start();
  bool hasServed() const;
  bool isAskedToEnd(std::chrono::milliseconds limit) const;
  bool watch();

  SystemRoot root_;
  std::vector<std::string> arguments_;
  Descriptor signals_;
  std::optional<ChildProcess> bird_;
};

} // namespace icloud
