#include "platform/posix/children/Wakeup.h"

#include <array>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include <unistd.h>

namespace driftmark {

Wakeup::Wakeup() {
  std::optional<system_calls::Pipe> pipe = system_calls::makePipe();
  if (!pipe || !system_calls::setNonBlocking(pipe->readEnd.number()))
    throw std::system_error(errno, std::generic_category(), "pipe");
  pipe_ = std::move(*pipe);
}

void Wakeup::wake() {
  if (pending_.exchange(true))
    return;
  const char byte = 0;
  while (write(pipe_.writeEnd.number(), &byte, 1) < 0 && errno == EINTR) {
  }
}

void Wakeup::clear() {
  std::array<char, 16> bytes{};
  while (read(pipe_.readEnd.number(), bytes.data(), bytes.size()) > 0) {
  }
  pending_ = false;
}

} // namespace driftmark
