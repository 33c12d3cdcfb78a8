#pragma once

#include "common/Descriptor.h"

namespace driftmark::test {

/// A free port of this machine. Calls to it are refused unless somebody listens at the socket.
struct LocalPort {
  /// Throws std::system_error.
  LocalPort();

  icloud::Descriptor socket;
  int number = 0;
};

} // namespace driftmark::test
