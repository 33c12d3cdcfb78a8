#pragma once

#include <string>
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

/// The folder that holds the item at `path`: "/" for what lies in the root and the root itself, ""
/// for a name alone.
std::string deletingLastPathComponent(std::string_view path);

/// `folder` and a name in it, with one "/" between them.
std::string appendingPathComponent(std::string_view folder, std::string_view name);

/// `path` with "~" in the place of the folder `home` that it lies in or is; another path as it is.
std::string abbreviatingWithTilde(std::string_view path, std::string_view home);

} // namespace driftmark
