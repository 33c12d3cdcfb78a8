#pragma once

#include "common/Descriptor.h"

#include <functional>
#include <string>
#include <utility>

namespace icloud {

/// Cuts what comes through a descriptor into lines.
class LineReader {
public:
  using Handler = std::function<void(const std::string& line)>;

  LineReader() = default;
  LineReader(Descriptor source, Handler handler)
      : source_(std::move(source)), handler_(std::move(handler)) {}

  /// -1 after the end.
  int descriptor() const { return source_.get(); }

  /// Reads once, waiting for bytes. At the end the rest is a line, and the descriptor is closed.
  void read();

  /// Reads what is there without waiting, then closes.
  void finish();

private:
  void take(const char* bytes, std::size_t count);
  void end();

  Descriptor source_;
  Handler handler_;
  std::string partial_;
};

} // namespace icloud
