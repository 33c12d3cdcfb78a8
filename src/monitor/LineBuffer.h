#pragma once

#include <string>
#include <string_view>

namespace driftmark {

/// Splits a stream of bytes into lines. The bytes after the last newline wait for the next chunk;
/// their number is not limited. Each byte is examined once, however small the chunks are.
class LineBuffer {
public:
  /// Takes the next bytes of the stream and calls `handle(line)` for every line that they complete,
  /// in order, without its newline. The line is valid during the call, which must not call
  /// `append`.
  template <class Handler> void append(std::string_view chunk, Handler&& handle) {
    if (!pending_.empty()) {
      const std::size_t end = chunk.find('\n');
      pending_.append(chunk.substr(0, end));
      if (end == std::string_view::npos)
        return;
      handle(std::string_view(pending_));
      clearPending();
      chunk.remove_prefix(end + 1);
    }
    for (std::size_t end = chunk.find('\n'); end != std::string_view::npos;
         end = chunk.find('\n')) {
      handle(chunk.substr(0, end));
      chunk.remove_prefix(end + 1);
    }
    pending_.append(chunk);
  }

private:
  /// Empties the buffer and frees the memory that an unusually long line took.
  void clearPending() {
    constexpr std::size_t maxKeptCapacity = 4096;
    if (pending_.capacity() > maxKeptCapacity)
      std::string().swap(pending_);
    pending_.clear();
  }

  std::string pending_;
};

} // namespace driftmark
