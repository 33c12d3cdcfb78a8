#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace icloud {

/// The path of a bundle's Info.plist.
std::filesystem::path infoPlistOf(const std::filesystem::path& bundle);

/// The text for a key in a bundle's Info.plist, or nothing. Throws std::runtime_error when the file
/// is missing or not a property list.
std::optional<std::string> infoText(const std::filesystem::path& bundle, const std::string& key);

} // namespace icloud
