#pragma once

#include <cstddef>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace icloud {

/// What a scenario expects of the log of the program that watches it.
struct Expectation {
  enum class Kind {
    count,   ///< between `least` and `most` lines match
    inOrder, ///< one line matches, after those of the earlier expectations of this kind
    never,   ///< no line matches
    allow,   ///< any number of lines may match
  };
  static constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

  Kind kind = Kind::count;
  std::string pattern; ///< with the wildcards of `matchesGlob`
  std::size_t least = 0;
  std::size_t most = unlimited;
  unsigned line = 0; ///< in the scenario's file
};

/// How one expectation compares with a log.
struct ExpectationResult {
  Expectation expectation;
  std::size_t seen = 0;
  std::optional<std::size_t> firstLine; ///< the index of the first line that matched
  bool fulfilled = false;
};

/// How all expectations compare with a log.
struct CheckedLog {
  std::vector<ExpectationResult> results;
  std::vector<std::string> unexpected; ///< lines that no expectation covers

  bool fulfilled() const;
};

/// Compares a log with the expectations of a scenario. An expectation has to cover every line: by a
/// count, by an allowance, or as the one line of an in-order expectation. `names` replace "{name}"
/// in the patterns; their values have no wildcards.
CheckedLog checkLog(const std::vector<std::string>& log,
                    const std::vector<Expectation>& expectations,
                    const std::map<std::string, std::string>& names = {});

} // namespace icloud
