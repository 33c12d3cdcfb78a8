#pragma once

#include <string>
#include <string_view>

namespace driftmark {

/// `path` without the slashes at its end; "/" for a path of slashes alone.
inline std::string_view withoutTrailingSlashes(std::string_view path) {
  const std::size_t last = path.find_last_not_of('/');
  return path.substr(0, last == std::string_view::npos ? 1 : last + 1);
}

/// The last component of a path, trailing slashes not counted; "/" for a path of slashes alone.
inline std::string_view lastPathComponent(std::string_view path) {
  const std::string_view item = withoutTrailingSlashes(path);
  return item == "/" ? item : item.substr(item.rfind('/') + 1);
}

/// The folder that holds the item at `path`: "/" for the root and the items in it, "" for a name
/// alone.
std::string deletingLastPathComponent(std::string_view path);

/// `folder` and `name`, with one "/" between them.
std::string appendingPathComponent(std::string_view folder, std::string_view name);

/// `path` with the folder `home` at its start replaced by "~". A path outside `home` is unchanged.
std::string abbreviatingWithTilde(std::string_view path, std::string_view home);

} // namespace driftmark
