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
  /// `arguments` are those of the daemon.
  Supervisor(const SystemRoot& root, std::vector<std::string> arguments);

  /// Runs the daemon, and restarts it with `--resume` whenever it ends, until SIGTERM or SIGINT
  /// ends both. Returns the exit status: 0, or the daemon's own when the first one fails before it
  /// serves.
  int run();

private:
  void start();
  bool hasServed() const;
  bool isSignalledWithin(std::chrono::milliseconds limit) const;
  bool watch();

  SystemRoot root_;
  std::vector<std::string> arguments_;
  Descriptor signals_;
  std::optional<ChildProcess> bird_;
};

} // namespace icloud
