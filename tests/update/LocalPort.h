#pragma once

#include "common/Descriptor.h"

namespace driftmark::test {

/// A free local port. Connections to it are refused unless the socket listens.
struct LocalPort {
  /// Throws std::system_error.
  LocalPort();

  icloud::Descriptor socket;
  int number = 0;
};

} // namespace driftmark::test
