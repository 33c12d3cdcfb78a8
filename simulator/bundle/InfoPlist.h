#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace icloud {

/// Where a bundle keeps its Info.plist.
std::filesystem::path infoPlistOf(const std::filesystem::path& bundle);

/// The text that a bundle's Info.plist has for a key, or nothing when it has none. Throws
/// std::runtime_error when the file is missing or is no property list.
std::optional<std::string> infoText(const std::filesystem::path& bundle, const std::string& key);

} // namespace icloud
