#pragma once

#include <filesystem>

namespace icloud {

/// Copies a file, or a folder with all that is in it, with modes, times, extended attributes and
/// symbolic links. A folder is merged into one that is there; files of the same names are replaced.
/// Throws std::runtime_error.
void copyTree(const std::filesystem::path& source, const std::filesystem::path& target);

} // namespace icloud
