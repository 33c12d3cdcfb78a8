#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace driftmark::test {

/// A long text without repetitions: numbered records. The writer and the checker make the same one.
class FloodPattern {
public:
  static constexpr std::size_t recordSize = 8;

  /// The next `count` records.
  std::string next(std::size_t count) {
    std::string text;
    text.reserve(count * recordSize);
    for (; count > 0; --count)
      appendRecord(text);
    return text;
  }

private:
  void appendRecord(std::string& text) {
    constexpr std::string_view digits = "0123456789abcdef";
    for (unsigned shift = 28; shift > 0; shift -= 4)
      text += digits[(number_ >> (shift - 4)) & 0xfU];
    text += '|';
    ++number_;
  }

  std::uint32_t number_ = 0;
};

/// Checks a `FloodPattern` that arrives in pieces.
class FloodChecker {
public:
  /// Whether everything so far is the pattern.
  bool check(std::string_view bytes) {
    received_ += bytes.size();
    remainder_ += bytes;
    const std::size_t whole = remainder_.size() / FloodPattern::recordSize;
    right_ = right_ && std::string_view(remainder_).substr(0, whole * FloodPattern::recordSize) ==
                           pattern_.next(whole);
    remainder_.erase(0, whole * FloodPattern::recordSize);
    return right_;
  }

  bool isRight() const { return right_; }
  std::size_t received() const { return received_; }

private:
  FloodPattern pattern_;
  std::string remainder_;
  std::size_t received_ = 0;
  bool right_ = true;
};

} // namespace driftmark::test
