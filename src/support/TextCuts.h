#pragma once

#include <string_view>

namespace driftmark {

/// `text` without the spaces and tabs at both ends.
inline std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos)
    return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

} // namespace driftmark
