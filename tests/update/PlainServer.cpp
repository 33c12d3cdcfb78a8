// How tests notice connections without TLS.

#include "update/PlainServer.h"

#include "common/SystemFailure.h"
#include "process/Pipe.h"

#include <sys/socket.h>

namespace driftmark::test {

PlainServer::PlainServer() {
  if (listen(port_.socket.get(), SOMAXCONN) != 0)
    icloud::throwSystemFailure("cannot listen");
}

std::string PlainServer::url() const {
  return "http://localhost:" + std::to_string(port_.number) + "/";
}

bool PlainServer::hasClient() const {
  return icloud::isReadableWithin(port_.socket.get(), std::chrono::milliseconds(0));
}

} // namespace driftmark::test
