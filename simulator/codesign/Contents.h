#pragma once

#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>

namespace icloud {

/// Why a bundle is not accepted, in the words of the tool.
class SigningFailure : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// Where a bundle keeps its seal, relative to it.
inline constexpr const char* signaturePath = "Contents/_CodeSignature/CodeResources";

/// What is in a bundle, its seal excepted: of each file and link, by its path in the bundle, a text
/// that differs when its contents, its target, its kind or whether it can be run differ.
using Contents = std::map<std::string, std::string>;

/// Looks through a bundle. Throws SigningFailure or std::runtime_error.
Contents contentsOf(const std::filesystem::path& bundle);

/// Throws SigningFailure when the bundle is a symbolic link or has one in it that leads elsewhere.
void requireLinksInside(const std::filesystem::path& bundle);

} // namespace icloud
