#pragma once

#include <cstdint>
#include <filesystem>

namespace icloud {

/// What the files at and below `path` take up on disk, in bytes: their blocks, not their sizes.
/// Links are not followed. Throws std::system_error.
std::uint64_t bytesOnDisk(const std::filesystem::path& path);

} // namespace icloud
