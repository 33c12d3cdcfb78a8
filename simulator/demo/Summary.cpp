// How the comparison of a run with its scenario is printed.

#include "demo/Summary.h"

#include <algorithm>

namespace icloud {
namespace {

using Kind = Expectation::Kind;

constexpr std::size_t markWidth = 8;
constexpr std::size_t expectedWidth = 11;
constexpr std::size_t seenWidth = 6;
constexpr std::size_t timeWidth = 10;
constexpr std::size_t maxUnexpected = 40;

std::string padded(std::string text, std::size_t width) {
  text.resize(std::max(text.size() + 1, width), ' ');
  return text;
}

std::string mark(bool good) {
  return "  " + padded(good ? "ok" : "FAIL", markWidth - 2);
}

std::string expectedCount(const Expectation& expectation) {
  if (expectation.kind == Kind::allow)
    return "any";
  if (expectation.kind == Kind::never)
    return "none";
  if (expectation.least == expectation.most)
    return std::to_string(expectation.least);
  if (expectation.most == Expectation::unlimited)
    return std::to_string(expectation.least) + " or more";
  return std::to_string(expectation.least) + " to " + std::to_string(expectation.most);
}

std::string asDeviation(const ExpectationResult& result) {
  const std::string place =
      "line " + std::to_string(result.expectation.line) + " of the scenario: ";
  if (result.expectation.kind == Kind::inOrder)
    return place + "not seen at its place in the order: " + result.expectation.pattern;
  return place + "expected " + expectedCount(result.expectation) + ", seen " +
         std::to_string(result.seen) + ": " + result.expectation.pattern;
}

} // namespace

Summary::Summary(CheckedLog log, std::vector<std::string> times, std::vector<Condition> conditions)
    : log_(std::move(log)), times_(std::move(times)), conditions_(std::move(conditions)) {
  Condition covered{"an expectation covers every log line", {}};
  const std::size_t shown = std::min(log_.unexpected.size(), maxUnexpected);
  for (std::size_t index = 0; index < shown; ++index)
    covered.problems.push_back("unexpected log line: " + log_.unexpected[index]);
  if (shown < log_.unexpected.size())
    covered.problems.push_back("and more unexpected log lines: " +
                               std::to_string(log_.unexpected.size() - shown));
  conditions_.insert(conditions_.begin(), std::move(covered));
  findDeviations();
}

void Summary::findDeviations() {
  for (const ExpectationResult& result : log_.results)
    if (!result.fulfilled)
      deviations_.push_back(asDeviation(result));
  for (const Condition& condition : conditions_)
    deviations_.insert(deviations_.end(), condition.problems.begin(), condition.problems.end());
}

std::string Summary::orderedRows() const {
  std::string rows;
  for (const ExpectationResult& result : log_.results)
    if (result.expectation.kind == Kind::inOrder)
      rows += mark(result.fulfilled) +
              padded(result.firstLine ? times_.at(*result.firstLine) : "never", timeWidth) +
              result.expectation.pattern + "\n";
  if (rows.empty())
    return rows;
  return "\nLog lines in this order:\n\n" + std::string(markWidth, ' ') +
         padded("seen at", timeWidth) + "line\n" + rows;
}

std::string Summary::countedRows() const {
  std::string rows;
  for (const ExpectationResult& result : log_.results)
    if (result.expectation.kind != Kind::inOrder)
      rows += mark(result.fulfilled) + padded(expectedCount(result.expectation), expectedWidth) +
              padded(std::to_string(result.seen), seenWidth) + result.expectation.pattern + "\n";
  if (rows.empty())
    return rows;
  return "\nLog lines by number:\n\n" + std::string(markWidth, ' ') +
         padded("expected", expectedWidth) + padded("seen", seenWidth) + "line\n" + rows;
}

std::string Summary::text() const {
  std::string text = "\nWhat the scenario expects, and what was seen\n";
  text += orderedRows() + countedRows() + "\nOther conditions:\n\n";
  for (const Condition& condition : conditions_)
    text += mark(condition.problems.empty()) + condition.text + "\n";
  const std::size_t count = log_.results.size() + conditions_.size();
  if (deviations_.empty())
    return text + "\nAll " + std::to_string(count) + " hold: no deviation from the scenario.\n";
  text += "\nDeviations from the scenario: " + std::to_string(deviations_.size()) + "\n\n";
  for (const std::string& deviation : deviations_)
    text += "  - " + deviation + "\n";
  return text;
}

} // namespace icloud
