#pragma once

#include <string>
#include <string_view>

namespace icloud {

/// The reader has closed the output.
struct OutputClosed {};

/// Standard output of a command-line tool: line by line on a terminal, in larger blocks elsewhere.
/// Blocks while the reader is slow. Throws OutputClosed once the reader has closed it.
class TextOutput {
public:
  explicit TextOutput(int descriptor);

  bool isTerminal() const { return isTerminal_; }
  int descriptor() const { return descriptor_; }

  /// Writes a line and its newline.
  void line(std::string_view text);

  /// Writes bytes unchanged, at once.
  void raw(std::string_view bytes);

  void flush();

private:
  int descriptor_;
  bool isTerminal_;
  std::string buffer_;
};

} // namespace icloud
