// How tests reserve a free port.

#include "update/LocalPort.h"

#include "common/SystemFailure.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace driftmark::test {

LocalPort::LocalPort() : socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (bind(socket.get(), generic, size) != 0 || getsockname(socket.get(), generic, &size) != 0)
    icloud::throwSystemFailure("cannot bind a port");
  number = ntohs(address.sin_port);
}

} // namespace driftmark::test
