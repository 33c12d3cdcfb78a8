#pragma once

#include "ports/SystemText.h"
#include "support/Utf8.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace driftmark::test {

/// Texts in a fixed plain form: byte counts are "4096 bytes", times "120 s ago"; a URL is any text
/// that is not empty and contains no space; characters are code points.
class TestSystemText final : public SystemText {
public:
  std::string byteCount(std::int64_t bytes) const override {
    return std::to_string(bytes) + " bytes";
  }

  bool isUrl(const std::string& text) const override {
    return !text.empty() && text.find(' ') == std::string::npos;
  }

  std::string relativeTime(Date date, Date now) const override {
    return std::to_string(std::chrono::round<std::chrono::seconds>(now - date).count()) + " s ago";
  }

  std::string firstCharacters(const std::string& text, std::size_t count) const override {
    std::size_t end = 0;
    for (; count > 0 && end < text.size(); --count)
      end += std::max(utf8SequenceLength(std::string_view(text).substr(end)), std::size_t{1});
    return text.substr(0, end);
  }
};

} // namespace driftmark::test
