#pragma once

#include <string>

namespace driftmark {

/// A picture by its symbol name. Symbols are drawn in the colour of the text around them.
struct Symbol {
  std::string name;
  std::string description; ///< what a screen reader says

  bool operator==(const Symbol&) const = default;
};

} // namespace driftmark
