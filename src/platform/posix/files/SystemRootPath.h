#pragma once

#include "support/Paths.h"

#include <string>
#include <string_view>

/// A system root is a folder that stands for "/" where this program names parts of the system; ""
/// and "/" stand for none. Only "/Applications", the paths below it, and tools are moved below it.
/// Any thread.
namespace driftmark {

/// Whether `path` is `folder` or below it.
inline bool isAtOrBelow(const std::string& path, const std::string& folder) {
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

/// The text to put before an absolute path; "" when there is no system root.
inline std::string systemRootPrefix(std::string_view root) {
  const std::string_view path = withoutTrailingSlashes(root);
  return std::string(path == "/" ? "" : path);
}

/// The folder that is moved below a system root.
inline constexpr const char* applicationsFolder = "/Applications";

/// The real path of "/Applications" or of an item below it; other paths stay the same.
inline std::string belowSystemRoot(const std::string& root, const std::string& path) {
  return isAtOrBelow(path, applicationsFolder) ? systemRootPrefix(root) + path : path;
}

/// The path by which this program names the item at the real `path`: the inverse of
/// `belowSystemRoot`.
inline std::string withoutSystemRoot(const std::string& root, const std::string& path) {
  const std::string prefix = systemRootPrefix(root);
  return isAtOrBelow(path, prefix + applicationsFolder) ? path.substr(prefix.size()) : path;
}

} // namespace driftmark
