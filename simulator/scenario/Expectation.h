#pragma once

#include <cstddef>
#include <limits>
#include <string>

namespace icloud {

/// What a scenario asks of the log of the program that watches it.
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

} // namespace icloud
