// How a port is reserved.

#include "macos/LocalPort.h"

#include <cerrno>
#include <system_error>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace driftmark::test {

LocalPort::LocalPort(Kind kind) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  const bool isBound = bind(socket_.number(), generic, size) == 0 &&
                       getsockname(socket_.number(), generic, &size) == 0;
  if (!isBound || (kind == Kind::silent && listen(socket_.number(), SOMAXCONN) != 0))
    throw std::system_error(errno, std::generic_category(), "port");
  number_ = ntohs(address.sin_port);
}

std::string LocalPort::url() const {
  return "https://127.0.0.1:" + std::to_string(number_) + "/";
}

} // namespace driftmark::test
