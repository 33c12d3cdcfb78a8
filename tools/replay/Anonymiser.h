#pragma once

#include <cstddef>
#include <map>
#include <random>
#include <set>
#include <string>
#include <string_view>

namespace driftmark {

/// Replaces the names of files and folders in a capture by others of the same length: a letter by a
/// letter, a digit by a digit, any other character of a name by one of as many bytes. Spaces,
/// punctuation, a dot in front, colours and states stay. The same name becomes the same name, and
/// different names stay different. What a name becomes depends on the names before it, not on its
/// letters, and is the same in each run.
class Anonymiser {
public:
  /// The line, without its newline, with other names. It has the same length.
  std::string anonymised(std::string_view line);

private:
  std::string replacementOf(std::string_view name);
  std::string drawn(std::string_view name);
  char32_t draw(char32_t first, char32_t last);

  std::mt19937 random_; // with its default seed
  std::map<std::string, std::string, std::less<>> replacements_;
  std::set<std::string, std::less<>> taken_;
};

} // namespace driftmark
