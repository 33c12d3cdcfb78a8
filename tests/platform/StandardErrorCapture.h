#pragma once

#include "platform/posix/FileDescriptor.h"

#include <cstddef>
#include <string>
#include <vector>

namespace driftmark::test {

/// Captures what this process writes to standard error as long as this object lives.
class StandardErrorCapture {
public:
  StandardErrorCapture();
  StandardErrorCapture(const StandardErrorCapture&) = delete;
  StandardErrorCapture& operator=(const StandardErrorCapture&) = delete;
  ~StandardErrorCapture();

  /// Everything written so far.
  std::string text() const;

  /// The first `count` lines without their line ends; fewer when there are not as many.
  std::vector<std::string> lines(std::size_t count) const;

private:
  FileDescriptor before_;
  FileDescriptor file_;
};

/// Makes `descriptor` the standard error of this process; returns what it was before.
FileDescriptor replaceStandardError(int descriptor);

} // namespace driftmark::test
