#pragma once

#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>

namespace icloud {

/// Why a bundle is refused, in the words of the tool.
class SigningFailure : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// Where a bundle keeps its signature, relative to the bundle.
inline constexpr const char* signaturePath = "Contents/_CodeSignature/CodeResources";

/// What is in a bundle, except its signature: for each file and link, by its path in the bundle, a
/// text that covers contents, target, kind and whether it is executable.
using BundleContents = std::map<std::string, std::string>;

/// Reads a bundle. Throws SigningFailure or std::runtime_error.
BundleContents contentsOf(const std::filesystem::path& bundle);

/// Throws SigningFailure when the bundle is a symbolic link or contains one that leads outside.
void requireLinksInside(const std::filesystem::path& bundle);

} // namespace icloud
