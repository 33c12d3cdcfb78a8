#pragma once

#include "common/Descriptor.h"

#include <string>
#include <string_view>

namespace icloud::test {

/// The two ends of a pipe or of a pseudo-terminal, and what was read from it. A wait that takes
/// longer than any test should throws.
class Channel {
public:
  static Channel pipe();
  static Channel terminal();

  /// The end for a child to write to.
  int childEnd() const { return childEnd_.get(); }

  /// Gives the child's end up here, so that the output ends with the child.
  void closeChildEnd() { childEnd_.reset(); }

  /// Nobody reads any more.
  void closeReadingEnd() { readingEnd_.reset(); }

  /// Reads until `text` was seen so many times, and returns everything so far.
  const std::string& readUntil(std::string_view text, unsigned times = 1);

  /// Reads what is there without waiting, and returns everything so far.
  const std::string& readSoFar();

  /// Reads to the end of the output, and returns everything.
  const std::string& readToEnd();

private:
  Channel(Descriptor readingEnd, Descriptor childEnd);
  bool readSome();

  Descriptor readingEnd_;
  Descriptor childEnd_;
  std::string text_;
};

} // namespace icloud::test
