#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace driftmark::test {

/// Everything at and below a path: for each relative path its kind, mode and contents (a file's
/// bytes as a hash, a link's target). Two trees are the same when their maps are.
using Tree = std::map<std::string, std::string>;

/// The tree at `path`, links not followed; empty when nothing is there.
Tree treeAt(const std::filesystem::path& path);

} // namespace driftmark::test
