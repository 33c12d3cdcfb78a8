#include "process/LineReader.h"

#include <array>
#include <cerrno>

#include <poll.h>

namespace icloud {

void LineReader::read() {
  std::array<char, 65536> bytes;
  const ssize_t count = ::read(source_.get(), bytes.data(), bytes.size());
  if (count > 0)
    take(bytes.data(), static_cast<std::size_t>(count));
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

void LineReader::take(const char* bytes, std::size_t count) {
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
