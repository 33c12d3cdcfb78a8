#pragma once

#include <string>
#include <string_view>

namespace icloud {

/// Nobody reads the output any more.
struct OutputGone {};

/// Standard output of a command-line tool: line by line and in colour on a terminal, in larger
/// blocks and plain elsewhere. Blocks while the reader is slow; throws OutputGone when there is no
/// reader any more.
class TextOutput {
public:
  explicit TextOutput(int descriptor);

  bool isTerminal() const { return isTerminal_; }
  int descriptor() const { return descriptor_; }

  /// Writes a line and its newline.
  void line(std::string_view text);

  /// Writes bytes as they are, at once.
  void raw(std::string_view bytes);

  void flush();

private:
  int descriptor_;
  bool isTerminal_;
  std::string buffer_;
};

} // namespace icloud
