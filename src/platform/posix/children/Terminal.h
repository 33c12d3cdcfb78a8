#pragma once

#include "platform/posix/FileDescriptor.h"
#include "ports/ChildProcesses.h"

#include <variant>

namespace driftmark {

/// Both ends of a pseudo-terminal in its default mode. Neither end is inherited by a child by
/// itself, nor does it become the controlling terminal of this process.
struct Terminal {
  FileDescriptor master; ///< reads never block
  FileDescriptor slave;

  /// Opens a new pseudo-terminal, or says at which stage that failed. Any thread.
  static std::variant<Terminal, LaunchError> open();
};

} // namespace driftmark
