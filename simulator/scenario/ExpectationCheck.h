#pragma once

#include "scenario/Expectation.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace icloud {

/// What became of one expectation.
struct ExpectationResult {
  Expectation expectation;
  std::size_t seen = 0;
  std::optional<std::size_t> firstLine; ///< the index of the first line seen
  bool fulfilled = false;
};

/// What became of all of them.
struct CheckedLog {
  std::vector<ExpectationResult> results;
  std::vector<std::string> unexpected; ///< lines that no expectation accounts for

  bool fulfilled() const;
};

/// Compares a log with the expectations of a scenario. Every line has to be accounted for: by a
/// count, by an allowance, or as the one line that an in-order expectation waited for.
/// `names` are put in for "{name}" in the patterns.
CheckedLog checkLog(const std::vector<std::string>& log,
                    const std::vector<Expectation>& expectations,
                    const std::map<std::string, std::string>& names = {});

} // namespace icloud
