#pragma once

#include <cstdint>
#include <string>

namespace driftmark {

/// Texts in the form that the system gives them.
class Text {
public:
  virtual ~Text() = default;

  /// A byte count in the system's file style, such as "Zero KB", "4 KB" or "1.2 MB". Any thread.
  virtual std::string byteCount(std::int64_t bytes) const = 0;
};

} // namespace driftmark
