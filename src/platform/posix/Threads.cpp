// How a thread that waits in `poll` is woken up: by one byte in a pipe, however many ask for it.

#include "platform/posix/Threads.h"

#include <array>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include <unistd.h>

namespace driftmark {

Wakeup::Wakeup() {
  std::optional<Pipe> pipe = makePipe();
  if (!pipe || !setNonBlocking(pipe->readEnd.number()))
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
