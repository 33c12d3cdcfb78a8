#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include <sys/stat.h>

namespace icloud::test {

struct stat statOf(const std::filesystem::path& path);

/// The cloud state in a file's extended attribute; absent where the file system has none.
std::optional<std::string> stateAttribute(const std::filesystem::path& path);

/// Checks that the file has blocks for all its bytes and is in sync.
void expectDownloaded(const std::filesystem::path& path, off_t bytes);

/// Checks that the file has its size, no blocks, and the state of an evicted file.
void expectEvicted(const std::filesystem::path& path, off_t bytes);

} // namespace icloud::test
