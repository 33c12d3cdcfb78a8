// Which paths lie below a system root.

#include "platform/posix/files/SystemRootPath.h"

#include "support/Paths.h"

namespace driftmark {

namespace {

constexpr const char* applications = "/Applications";

bool isAtOrBelow(const std::string& path, const std::string& folder) {
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

} // namespace

std::string systemRootPrefix(std::string_view root) {
  const std::string_view path = withoutTrailingSlashes(root);
  return std::string(path == "/" ? "" : path);
}

std::string belowSystemRoot(const std::string& root, const std::string& path) {
  return isAtOrBelow(path, applications) ? systemRootPrefix(root) + path : path;
}

std::string withoutSystemRoot(const std::string& root, const std::string& path) {
  const std::string prefix = systemRootPrefix(root);
  return isAtOrBelow(path, prefix + applications) ? path.substr(prefix.size()) : path;
}

} // namespace driftmark
