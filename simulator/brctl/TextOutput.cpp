// When output is written.
#include "brctl/TextOutput.h"

#include <cerrno>

#include <poll.h>
#include <unistd.h>

namespace icloud {
namespace {

constexpr std::size_t blockSize = 4096;

void waitUntilWritable(int descriptor) {
  pollfd wait{descriptor, POLLOUT, 0};
  poll(&wait, 1, -1);
}

} // namespace

TextOutput::TextOutput(int descriptor)
    : descriptor_(descriptor), isTerminal_(isatty(descriptor) == 1) {}

void TextOutput::line(std::string_view text) {
  buffer_ += text;
  buffer_ += '\n';
  if (isTerminal_ || buffer_.size() >= blockSize)
    flush();
}

void TextOutput::raw(std::string_view bytes) {
  buffer_ += bytes;
  flush();
}

void TextOutput::flush() {
  for (std::size_t written = 0; written < buffer_.size();) {
    const ssize_t count = write(descriptor_, buffer_.data() + written, buffer_.size() - written);
    if (count >= 0)
      written += static_cast<std::size_t>(count);
    else if (errno == EAGAIN)
      waitUntilWritable(descriptor_);
    else if (errno != EINTR)
      throw OutputClosed{};
  }
  buffer_.clear();
}

} // namespace icloud
