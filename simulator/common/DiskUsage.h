#pragma once

#include <cstdint>
#include <filesystem>

namespace icloud {

/// The space on disk of the files at and below `path`, in bytes: their blocks, not their sizes.
/// Does not follow links. Throws std::system_error.
std::uint64_t bytesOnDisk(const std::filesystem::path& path);

} // namespace icloud
