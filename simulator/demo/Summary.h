#pragma once

#include "scenario/ExpectationCheck.h"

#include <string>
#include <vector>

namespace icloud {

/// Something besides the log that has to hold, and what is wrong where it does not.
struct Condition {
  std::string text;
  std::vector<std::string> problems;
};

/// What a scenario wanted and what was seen, for people.
class Summary {
public:
  /// `times` has the time of every log line, as it is to be shown.
  Summary(CheckedLog log, std::vector<std::string> times, std::vector<Condition> conditions);

  /// Without a log.
  explicit Summary(std::vector<Condition> conditions) : conditions_(std::move(conditions)) {
    findDeviations();
  }

  /// Every deviation in a sentence of its own.
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
