// How `brctl` reaches the daemon, and how it words failures to.
#include "brctl/BirdLink.h"

#include "common/LocalSocket.h"

#include <array>
#include <cerrno>
#include <system_error>

#include <sys/socket.h>

namespace icloud {

BirdLink::BirdLink(const SystemRoot& root, std::initializer_list<std::string_view> request) {
  std::string bytes;
  appendRecord(bytes, request);
  try {
    socket_ = connectTo(root.runFolder(), SystemRoot::birdSocket);
  } catch (const std::system_error& error) {
    const auto& code = error.code();
    const bool isDown =
        code == std::errc::no_such_file_or_directory || code == std::errc::connection_refused;
    throw BirdFailure(isDown ? "bird is not running" : "cannot reach bird: " + code.message());
  }
  if (send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) !=
      static_cast<ssize_t>(bytes.size()))
    throw BirdFailure("the connection to bird was lost");
}

std::optional<Record> BirdLink::received() {
  auto record = reader_.next();
  if (record && record->size() == 2 && record->front() == "failure")
    throw BirdFailure(record->back());
  return record;
}

bool BirdLink::receive() {
  std::array<char, 65536> bytes;
  ssize_t count = 0;
  do
    count = recv(socket_.get(), bytes.data(), bytes.size(), 0);
  while (count < 0 && errno == EINTR);
  if (count <= 0)
    return false;
  reader_.append({bytes.data(), static_cast<std::size_t>(count)});
  return true;
}

Record BirdLink::await() {
  while (true) {
    if (auto record = received())
      return std::move(*record);
    if (!receive())
      throw BirdFailure("the connection to bird was lost");
  }
}

} // namespace icloud
