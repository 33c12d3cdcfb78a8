// How a log is compared with what a scenario expects of it.

#include "scenario/Expectation.h"

#include "scenario/Glob.h"

#include <algorithm>

namespace icloud {
namespace {

std::string withoutWildcards(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '*' || c == '?' || c == '\\')
      escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::string withNames(std::string pattern, const std::map<std::string, std::string>& names) {
  for (const auto& [name, value] : names) {
    const std::string mark = "{" + name + "}";
    const std::string text = withoutWildcards(value);
    for (std::size_t at = 0; (at = pattern.find(mark, at)) != std::string::npos; at += text.size())
      pattern.replace(at, mark.size(), text);
  }
  return pattern;
}

/// One comparison: the expectations with the names in their patterns replaced, and their results.
class LogCheck {
public:
  LogCheck(const std::vector<std::string>& log, const std::vector<Expectation>& expectations,
           const std::map<std::string, std::string>& names)
      : log_(log), covered_(log.size(), false) {
    for (const Expectation& expectation : expectations) {
      results_.push_back({expectation, 0, std::nullopt, false});
      patterns_.push_back(withNames(expectation.pattern, names));
    }
  }

  CheckedLog run() {
    matchInOrder();
    for (std::size_t index = 0; index < results_.size(); ++index)
      if (results_[index].expectation.kind != Expectation::Kind::inOrder)
        count(index);
    CheckedLog checked;
    for (std::size_t line = 0; line < log_.size(); ++line)
      if (!covered_[line])
        checked.unexpected.push_back(log_[line]);
    for (ExpectationResult& result : results_)
      result.fulfilled =
          result.seen >= result.expectation.least && result.seen <= result.expectation.most;
    checked.results = std::move(results_);
    return checked;
  }

private:
  bool matches(std::size_t expectation, std::size_t line) const {
    return matchesGlob(patterns_[expectation], log_[line]);
  }

  void record(std::size_t expectation, std::size_t line) {
    ExpectationResult& result = results_[expectation];
    ++result.seen;
    result.firstLine = result.firstLine.value_or(line);
    covered_[line] = true;
  }

  void count(std::size_t index) {
    for (std::size_t line = 0; line < log_.size(); ++line)
      if (matches(index, line))
        record(index, line);
  }

  // Finds the longest common sequence of expectations and lines: `at(row, line)` is the number of
  // expectations from `row` on that the lines from `line` on can fulfil. So a missing line fails
  // its own expectation only.
  void matchInOrder() {
    std::vector<std::size_t> ordered;
    for (std::size_t index = 0; index < results_.size(); ++index)
      if (results_[index].expectation.kind == Expectation::Kind::inOrder)
        ordered.push_back(index);
    const std::size_t width = log_.size() + 1;
    std::vector<std::size_t> best((ordered.size() + 1) * width, 0);
    const auto at = [&](std::size_t row, std::size_t line) -> std::size_t& {
      return best[row * width + line];
    };
    for (std::size_t row = ordered.size(); row-- > 0;)
      for (std::size_t line = log_.size(); line-- > 0;)
        at(row, line) = matches(ordered[row], line)
                            ? at(row + 1, line + 1) + 1
                            : std::max(at(row + 1, line), at(row, line + 1));
    for (std::size_t row = 0, line = 0; row < ordered.size() && line < log_.size();) {
      if (matches(ordered[row], line)) {
        record(ordered[row++], line++);
      } else if (at(row + 1, line) > at(row, line + 1)) {
        ++row;
      } else {
        ++line;
      }
    }
  }

  const std::vector<std::string>& log_;
  std::vector<ExpectationResult> results_;
  std::vector<std::string> patterns_;
  std::vector<bool> covered_;
};

} // namespace

bool CheckedLog::fulfilled() const {
  return unexpected.empty() &&
         std::all_of(results.begin(), results.end(),
                     [](const ExpectationResult& result) { return result.fulfilled; });
}

CheckedLog checkLog(const std::vector<std::string>& log,
                    const std::vector<Expectation>& expectations,
                    const std::map<std::string, std::string>& names) {
  return LogCheck(log, expectations, names).run();
}

} // namespace icloud
