// Reading from pipes: with a timeout, and line by line.

#include "process/Pipe.h"

#include "common/SystemFailure.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace icloud {

Pipe makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0)
    throwSystemFailure("cannot make a pipe");
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

bool isReadableWithin(int descriptor, std::chrono::milliseconds timeout) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  pollfd wait{descriptor, POLLIN, 0};
  while (true) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    const int ready = poll(&wait, 1, static_cast<int>(std::max<long>(left.count(), 0)));
    if (ready >= 0)
      return ready > 0;
  }
}

void LineReader::read() {
  std::array<char, 65536> bytes;
  const ssize_t count = ::read(source_.get(), bytes.data(), bytes.size());
  if (count > 0)
    splitLines(bytes.data(), static_cast<std::size_t>(count));
  else if (count == 0 || errno != EINTR)
    end();
}

void LineReader::finish() {
  while (source_) {
    pollfd wait{source_.get(), POLLIN, 0};
    if (poll(&wait, 1, 0) <= 0)
      end();
    else
      read();
  }
}

void LineReader::splitLines(const char* bytes, std::size_t count) {
  partial_.append(bytes, count);
  std::size_t begin = 0;
  for (std::size_t end = 0; (end = partial_.find('\n', begin)) != std::string::npos;
       begin = end + 1)
    handler_(partial_.substr(begin, end - begin));
  partial_.erase(0, begin);
}

void LineReader::end() {
  source_.reset();
  if (!partial_.empty())
    handler_(std::exchange(partial_, {}));
}

} // namespace icloud
