// How percentages and global reports are found in a text, without a regular-expression engine.

#include "monitor/Patterns.h"

#include <cstddef>

namespace driftmark {

namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

/// Removes the longest run of bytes that `belongs` accepts from the start of `text`, and returns
/// it.
template <class Belongs> std::string_view takeRun(std::string_view& text, Belongs belongs) {
  std::size_t length = 0;
  while (length < text.size() && belongs(text[length]))
    ++length;
  const std::string_view run = text.substr(0, length);
  text.remove_prefix(length);
  return run;
}

/// Removes `literal` from the start of `text`. False when `text` does not start with it.
bool takeLiteral(std::string_view& text, std::string_view literal) {
  if (!text.starts_with(literal))
    return false;
  text.remove_prefix(literal.size());
  return true;
}

} // namespace

std::optional<std::string_view> firstPercent(std::string_view text) {
  for (std::size_t sign = text.find('%'); sign != std::string_view::npos;
       sign = text.find('%', sign + 1)) {
    const auto digitsBefore = [&](std::size_t end) {
      std::size_t begin = end;
      while (begin > 0 && isDigit(text[begin - 1]))
        --begin;
      return begin;
    };
    std::size_t begin = digitsBefore(sign);
    if (begin == sign)
      continue;
    // A point belongs to the number when there are digits on both sides.
    if (begin > 0 && text[begin - 1] == '.') {
      const std::size_t whole = digitsBefore(begin - 1);
      if (whole < begin - 1)
        begin = whole;
    }
    return text.substr(begin, sign - begin);
  }
  return std::nullopt;
}

std::optional<GlobalMatch> firstGlobal(std::string_view text) {
  constexpr std::string_view opening = "Fraction completed: ";
  for (std::size_t start = text.find(opening); start != std::string_view::npos;
       start = text.find(opening, start + 1)) {
    std::string_view remaining = text.substr(start + opening.size());
    GlobalMatch match;
    match.fraction = takeRun(remaining, [](char c) { return isDigit(c) || c == '.'; });
    if (match.fraction.empty() || !takeLiteral(remaining, " / Completed: "))
      continue;
    match.completed = takeRun(remaining, isDigit);
    if (match.completed.empty() || !takeLiteral(remaining, " of "))
      continue;
    match.total = takeRun(remaining, isDigit);
    if (!match.total.empty())
      return match;
  }
  return std::nullopt;
}

} // namespace driftmark
