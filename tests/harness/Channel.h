#pragma once

#include "common/Descriptor.h"

#include <string>
#include <string_view>
#include <utility>

namespace driftmark::test {

/// The two ends of a pipe or of a pseudo-terminal, or one end of a stream, and what was read from
/// it. Every wait has a deadline and throws TimedOut with the text that did not come.
class Channel {
public:
  /// Both throw std::system_error.
  static Channel pipe();
  static Channel terminal();

  /// Of a stream that comes from elsewhere: there is no child's end.
  explicit Channel(icloud::Descriptor readingEnd) : Channel(std::move(readingEnd), {}) {}

  /// The end that a child writes to.
  int childEnd() const { return childEnd_.get(); }

  /// Closes this process's copy of the child's end, so that the output ends with the child.
  void closeChildEnd() { childEnd_.reset(); }

  /// Closes the reading end: the child's writes fail from now on.
  void closeReadingEnd() { readingEnd_.reset(); }

  /// Reads until `text` was seen `times` times. Returns everything read so far. Throws
  /// std::runtime_error when the output ends first.
  const std::string& readUntil(std::string_view text, unsigned times = 1);

  /// Reads what is available without waiting. Returns everything read so far.
  const std::string& readSoFar();

  /// Reads to the end of the output. Returns everything.
  const std::string& readToEnd();

private:
  Channel(icloud::Descriptor readingEnd, icloud::Descriptor childEnd);
  bool readSome(const std::string& awaited);

  icloud::Descriptor readingEnd_;
  icloud::Descriptor childEnd_;
  std::string text_;
};

} // namespace driftmark::test
