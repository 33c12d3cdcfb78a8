#pragma once

#include "update/LocalPort.h"

#include <string>

namespace driftmark::test {

/// A server without TLS that accepts connections and never answers.
class PlainServer {
public:
  /// Throws std::system_error.
  PlainServer();

  std::string url() const;

  /// Whether a client has connected.
  bool hasClient() const;

  /// Waits for a client and for the head of its request, then hangs up. Returns what it sent.
  std::string awaitRequest();

private:
  LocalPort port_;
};

} // namespace driftmark::test
