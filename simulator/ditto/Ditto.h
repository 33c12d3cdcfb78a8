#pragma once

#include <filesystem>

namespace icloud {

// Unpack.cpp

/// Unpacks a zip archive into a folder, which is created if necessary. Keeps modes, times and
/// symbolic links. Stops at the first entry that would be outside the folder or cannot be unpacked.
/// Throws std::runtime_error.
void unpack(const std::filesystem::path& archive, const std::filesystem::path& folder);

// Pack.cpp

/// Packs a file or the contents of a folder into a zip archive; with `keepParent` the names begin
/// with that of the folder. A failure leaves no archive. Throws std::runtime_error.
void pack(const std::filesystem::path& source, const std::filesystem::path& archive,
          bool keepParent);

// Copy.cpp

/// Copies a file or a folder with everything in it, with modes, times, extended attributes and
/// symbolic links. A folder is merged into an existing one; files of the same names are replaced.
/// Throws std::runtime_error.
void copyTree(const std::filesystem::path& source, const std::filesystem::path& target);

} // namespace icloud
