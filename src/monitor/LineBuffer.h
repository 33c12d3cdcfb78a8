#pragma once

#include "support/Strings.h"

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace driftmark {

/// Splits a stream of bytes into lines. The bytes after the last newline wait for the next chunk;
/// their number is not limited. Each byte is examined once, however small the chunks are.
class LineBuffer {
public:
  static constexpr std::size_t maxLines = 16; ///< that are handed over at once

  /// Takes the next bytes of the stream and calls `handle(std::span<const std::string_view>)` with
  /// the lines that they complete, in order, some at a time, without their newlines. The lines are
  /// valid during the call, which must not call
  /// `append`.
  template <class Handler> void append(std::string_view chunk, Handler&& handle) {
    if (!pending_.empty()) {
      const std::size_t end = chunk.find('\n');
      pending_.append(chunk.substr(0, end));
      if (end == std::string_view::npos)
        return;
      const std::string_view line = pending_;
      handle(std::span(&line, 1));
      clearScratch(pending_);
      chunk.remove_prefix(end + 1);
    }
    std::array<std::string_view, maxLines> lines;
    std::size_t count = 0;
    for (std::size_t end = chunk.find('\n'); end != std::string_view::npos;
         end = chunk.find('\n')) {
      lines[count++] = chunk.substr(0, end);
      if (chunk.size() > readAhead + 64) {
        __builtin_prefetch(chunk.data() + readAhead);
        __builtin_prefetch(chunk.data() + readAhead + 64);
      }
      chunk.remove_prefix(end + 1);
      if (count == maxLines) {
        handle(std::span<const std::string_view>(lines));
        count = 0;
      }
    }
    if (count > 0)
      handle(std::span<const std::string_view>(lines.data(), count));
    pending_.append(chunk);
  }

private:
  /// The search for newlines outruns the processor's own loading of a chunk, which stops while a
  /// batch is handled.
  static constexpr std::size_t readAhead = 4096;

  std::string pending_;
};

} // namespace driftmark
