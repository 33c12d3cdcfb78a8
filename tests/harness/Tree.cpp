// How tests compare folders.

#include "harness/Tree.h"

#include "harness/TemporaryFolder.h"

#include <functional>

namespace driftmark::test {
namespace fs = std::filesystem;

namespace {

std::string hashOf(const fs::path& file) {
  return std::to_string(std::hash<std::string>()(contentsOf(file)));
}

std::string describe(const fs::path& path) {
  const fs::file_status status = fs::symlink_status(path);
  if (fs::is_symlink(status))
    return "link to " + fs::read_symlink(path).string();
  const std::string mode = std::to_string(static_cast<unsigned>(status.permissions()));
  return fs::is_directory(status) ? "folder " + mode : "file " + mode + " " + hashOf(path);
}

} // namespace

Tree treeAt(const fs::path& path) {
  Tree tree;
  const fs::file_status status = fs::symlink_status(path);
  if (!fs::exists(status))
    return tree;
  tree["."] = describe(path);
  if (fs::is_directory(status))
    for (const auto& entry : fs::recursive_directory_iterator(path))
      tree[entry.path().lexically_relative(path).string()] = describe(entry.path());
  return tree;
}

} // namespace driftmark::test
