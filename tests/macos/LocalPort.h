#pragma once

#include "platform/posix/FileDescriptor.h"

#include <string>

namespace driftmark::test {

/// A TCP port of this machine that nobody else has. Connections are refused, unless it is silent:
/// then they are accepted and nothing ever comes.
class LocalPort {
public:
  enum class Kind { refusing, silent };

  /// Throws std::system_error.
  explicit LocalPort(Kind kind);

  int number() const { return number_; }
  std::string url() const;

private:
  FileDescriptor socket_;
  int number_ = 0;
};

} // namespace driftmark::test
