#pragma once

#include <filesystem>

namespace icloud {

/// Unpacks a zip archive into a folder, which is made when it is not there. Modes, times and
/// symbolic links are kept. The first entry that would lie outside, or cannot be unpacked, ends it.
/// Throws std::runtime_error.
void unpack(const std::filesystem::path& archive, const std::filesystem::path& folder);

/// Packs a file or what is in a folder into a zip archive, the folder's own name before it when
/// `keepParent` is set. Nothing is left of an archive that cannot be finished. Throws
/// std::runtime_error.
void pack(const std::filesystem::path& source, const std::filesystem::path& archive,
          bool keepParent);

} // namespace icloud
