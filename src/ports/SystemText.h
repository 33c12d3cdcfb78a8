#pragma once

#include "ports/Clock.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace driftmark {

/// Texts and their rules as the system defines them. The program's own string and UTF-8 helpers are
/// in `support/`.
class SystemText {
public:
  virtual ~SystemText() = default;

  /// A byte count in the system's file style, such as "Zero KB", "4 KB" or "1.2 MB". Any thread.
  virtual std::string byteCount(std::int64_t bytes) const = 0;

  /// Whether `text` is a well-formed URL, absolute or relative; the empty text is none. Any thread.
  virtual bool isUrl(const std::string& text) const = 0;

  /// The time from `now` to `date`, such as "2 minutes ago" or "in 3 hours". Main thread only.
  virtual std::string relativeTime(Date date, Date now) const = 0;

  /// The first `count` grapheme clusters of `text`: an emoji with its joiners or a letter with its
  /// accents is one. Any thread.
  virtual std::string firstCharacters(const std::string& text, std::size_t count) const = 0;
};

} // namespace driftmark
