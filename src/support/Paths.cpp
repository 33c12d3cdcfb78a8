// How paths are taken apart and joined.

#include "support/Paths.h"

namespace driftmark {

std::string deletingLastPathComponent(std::string_view path) {
  const std::string_view item = withoutTrailingSlashes(path);
  const std::size_t slash = item.rfind('/');
  if (slash == std::string_view::npos)
    return "";
  return std::string(withoutTrailingSlashes(item.substr(0, slash + 1)));
}

std::string appendingPathComponent(std::string_view folder, std::string_view name) {
  const std::string_view item = withoutTrailingSlashes(folder);
  return std::string(item == "/" ? "" : item).append("/").append(name);
}

std::string abbreviatingWithTilde(std::string_view path, std::string_view home) {
  const bool isInside = !home.empty() && path.starts_with(home) &&
                        (path.size() == home.size() || path[home.size()] == '/');
  return isInside ? std::string("~").append(path.substr(home.size())) : std::string(path);
}

} // namespace driftmark
