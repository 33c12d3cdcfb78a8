// How tests notice connections without TLS.

#include "update/PlainServer.h"

#include "common/SystemFailure.h"
#include "harness/Channel.h"
#include "harness/Waiting.h"
#include "process/Pipe.h"

#include <utility>

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

std::string PlainServer::awaitRequest() {
  awaitReadable(port_.socket.get(), "a client");
  icloud::Descriptor client(accept4(port_.socket.get(), nullptr, nullptr, SOCK_CLOEXEC));
  if (client.get() < 0)
    icloud::throwSystemFailure("cannot accept a client");
  return Channel(std::move(client)).readUntil("\r\n\r\n");
}

} // namespace driftmark::test
