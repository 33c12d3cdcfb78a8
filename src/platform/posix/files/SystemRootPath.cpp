#include "platform/posix/files/SystemRootPath.h"

#include "platform/posix/files/FilePath.h"

namespace driftmark::system_root_path {

namespace {

constexpr const char* applications = "/Applications";

bool isAtOrBelow(const std::string& path, const std::string& folder) {
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

/// The root as what is put before an absolute path.
std::string prefix(const std::string& root) {
  const std::string path = file_path::withoutTrailingSlashes(root);
  return path == "/" ? "" : path;
}

} // namespace

std::string located(const std::string& root, const std::string& path) {
  return isAtOrBelow(path, applications) ? prefix(root) + path : path;
}

std::string known(const std::string& root, const std::string& path) {
  const std::string before = prefix(root);
  return isAtOrBelow(path, before + applications) ? path.substr(before.size()) : path;
}

} // namespace driftmark::system_root_path
