#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include <sys/stat.h>

namespace icloud::test {

struct stat statOf(const std::filesystem::path& path);

/// The cloud state that is kept with a file; nothing where the file system keeps no such notes.
std::optional<std::string> notedState(const std::filesystem::path& path);

/// The file has blocks for all its bytes, and is in sync.
void expectContentsHere(const std::filesystem::path& path, off_t bytes);

/// The file has its size and no blocks, and is evicted.
void expectContentsGone(const std::filesystem::path& path, off_t bytes);

} // namespace icloud::test
