#pragma once

#include "common/Descriptor.h"

#include <chrono>
#include <functional>
#include <string>
#include <utility>

namespace icloud {

/// The two ends of a pipe.
struct Pipe {
  Descriptor reading;
  Descriptor writing;
};

/// Opens a pipe whose ends close on exec. Throws std::system_error.
Pipe makePipe();

/// Waits until a descriptor is readable. Returns false when it is not after `timeout`.
bool isReadableWithin(int descriptor, std::chrono::milliseconds timeout);

/// Splits the bytes from a descriptor into lines.
class LineReader {
public:
  using Handler = std::function<void(const std::string& line)>;

  LineReader() = default;
  LineReader(Descriptor source, Handler handler)
      : source_(std::move(source)), handler_(std::move(handler)) {}

  /// -1 after the end of the input.
  int descriptor() const { return source_.get(); }

  /// Reads once and waits for bytes. At the end of the input, an incomplete last line counts as a
  /// line, and the descriptor is closed.
  void read();

  /// Reads what is available without waiting, then closes the descriptor.
  void finish();

private:
  void splitLines(const char* bytes, std::size_t count);
  void end();

  Descriptor source_;
  Handler handler_;
  std::string partial_;
};

} // namespace icloud
