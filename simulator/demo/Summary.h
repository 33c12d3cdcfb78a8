#pragma once

#include "scenario/Expectation.h"

#include <string>
#include <vector>

namespace icloud {

/// Something that has to hold, and the problems when it does not.
struct Condition {
  std::string text;
  std::vector<std::string> problems;
};

/// What a scenario expected and what was seen, as display text.
class Summary {
public:
  /// `times` has the time of every log line, as it is printed.
  Summary(CheckedLog log, std::vector<std::string> times, std::vector<Condition> conditions);

  /// For a run whose log is not compared.
  explicit Summary(std::vector<Condition> conditions) : conditions_(std::move(conditions)) {
    findDeviations();
  }

  /// One sentence for each deviation.
  const std::vector<std::string>& deviations() const { return deviations_; }

  /// The table, and the deviations below it.
  std::string text() const;

private:
  void findDeviations();
  std::string orderedRows() const;
  std::string countedRows() const;

  CheckedLog log_;
  std::vector<std::string> times_;
  std::vector<Condition> conditions_;
  std::vector<std::string> deviations_;
};

} // namespace icloud
