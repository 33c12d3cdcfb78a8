#pragma once

#include <string_view>

namespace driftmark {

/// The system log.
class SystemLog {
public:
  virtual ~SystemLog() = default;

  /// Writes one line, given without a line end. Any thread. Never fails as far as the caller sees.
  virtual void log(std::string_view line) = 0;
};

} // namespace driftmark
