#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace driftmark::test {

/// All items at and below a path: for each relative path its kind, its mode, and a hash of a file's
/// contents or the target of a link. Equal trees have equal maps.
using Tree = std::map<std::string, std::string>;

/// The tree at `path`, links not followed; empty when nothing exists there.
Tree treeAt(const std::filesystem::path& path);

} // namespace driftmark::test
