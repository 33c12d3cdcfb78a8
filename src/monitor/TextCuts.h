#pragma once

#include <string_view>

namespace driftmark {

/// The last component of a path: what follows its last "/", trailing ones not counted. "/" for a
/// path of nothing else.
inline std::string_view lastPathComponent(std::string_view path) {
  const std::size_t last = path.find_last_not_of('/');
  if (last == std::string_view::npos)
    return path.substr(0, 1);
  const std::string_view trimmed = path.substr(0, last + 1);
  return trimmed.substr(trimmed.rfind('/') + 1);
}

/// `text` without the spaces and tabs at both ends.
inline std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos)
    return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

} // namespace driftmark
