#pragma once

#include <string_view>

namespace driftmark {

/// The system log.
class SystemLog {
public:
  virtual ~SystemLog() = default;

  /// Writes one line, passed without a line end. Any thread. Reports no failure.
  virtual void log(std::string_view line) = 0;
};

} // namespace driftmark
