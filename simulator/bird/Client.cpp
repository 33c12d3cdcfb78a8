// How the daemon reads a request and sends a client its records.
#include "bird/Client.h"

#include "common/SystemFailure.h"

#include <array>

#include <sys/socket.h>

namespace icloud {
namespace {

constexpr std::size_t maxSend = 65536;

pid_t peerOf(const Descriptor& socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  if (getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0)
    throwSystemFailure("cannot identify a client");
  return peer.pid;
}

bool wouldBlock() {
  return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
}

} // namespace

Client::Client(Descriptor socket) : socket_(std::move(socket)), process_(peerOf(socket_)) {}

std::optional<Record> Client::receive() {
  std::array<char, 4096> bytes;
  const ssize_t count = recv(socket_.get(), bytes.data(), bytes.size(), 0);
  if (count == 0 || (count < 0 && !wouldBlock()))
    close();
  if (count <= 0 || requested_)
    return std::nullopt;
  reader_.append({bytes.data(), static_cast<std::size_t>(count)});
  auto request = reader_.next();
  requested_ = request.has_value();
  return request;
}

bool Client::refill() {
  if (hasUnsent())
    return true;
  out_.clear();
  sent_ = 0;
  if (feeder_)
    feeder_->fill(out_, maxSend);
  return !out_.empty();
}

void Client::send() {
  while (!isClosed() && refill()) {
    const ssize_t count = ::send(socket_.get(), out_.data() + sent_, out_.size() - sent_,
                                 MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count < 0 && !wouldBlock())
      close();
    if (count < 0)
      return;
    sent_ += static_cast<std::size_t>(count);
  }
  if (feeder_ && feeder_->endsWhenEmpty())
    close();
}

} // namespace icloud
