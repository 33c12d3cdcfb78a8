#pragma once

#include "update/LocalPort.h"

#include <string>

namespace driftmark::test {

/// A port without TLS that takes calls and answers none of them.
class PlainServer {
public:
  /// Throws std::system_error.
  PlainServer();

  std::string url() const;

  /// Whether anybody has called.
  bool wasCalled() const;

private:
  LocalPort port_;
};

} // namespace driftmark::test
