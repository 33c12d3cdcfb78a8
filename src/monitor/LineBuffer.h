#pragma once

#include "support/Strings.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace driftmark {

/// Splits a stream of bytes into lines. The bytes after the last newline wait for the next chunk;
/// their number is not limited. Each byte is examined once, however small the chunks are.
class LineBuffer {
public:
  /// Takes the next bytes of the stream and calls `handle(std::string_view)` with each line that
  /// they complete, in order, without its newline. The lines are valid until `finish()`, which is
  /// called once after the last. Neither may call `append`.
  template <class Handle, class Finish>
  void append(std::string_view chunk, Handle&& handle, Finish&& finish) {
    std::size_t end = chunk.find('\n');
    if (end == std::string_view::npos) {
      pending_.append(chunk);
      return;
    }
    if (!pending_.empty()) {
      handle(std::string_view(pending_.append(chunk.substr(0, end))));
      chunk.remove_prefix(end + 1);
      end = chunk.find('\n');
    }
    for (; end != std::string_view::npos; end = chunk.find('\n')) {
      handle(chunk.substr(0, end));
      chunk.remove_prefix(end + 1);
    }
    finish();
    clearScratch(pending_);
    pending_.append(chunk);
  }

private:
  std::string pending_;
};

} // namespace driftmark
