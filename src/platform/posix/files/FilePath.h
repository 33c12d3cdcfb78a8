#pragma once

#include <string>

/// Absolute paths as byte strings. Any thread.
namespace driftmark::file_path {

/// The path without slashes at its end; "/" stays.
std::string withoutTrailingSlashes(std::string path);

/// The last component; "/" for the root.
std::string name(const std::string& path);

/// The folder that holds the item.
std::string parent(const std::string& path);

/// A name for a hidden item beside `path` that nothing has yet.
std::string hiddenSibling(const std::string& path);

} // namespace driftmark::file_path
