#pragma once

#include "common/Descriptor.h"
#include "common/SystemRoot.h"

#include <filesystem>

namespace icloud {

/// A system root with the tools in it, and beside it an empty home and a folder for temporary
/// files, all in a temporary folder that goes with this object.
class Sandbox {
public:
  /// Takes the tools from the system root `tools`. Throws std::system_error.
  explicit Sandbox(const std::filesystem::path& tools);
  Sandbox(const Sandbox&) = delete;
  Sandbox& operator=(const Sandbox&) = delete;
  ~Sandbox();

  /// Puts a copy of an application into the root's /Applications, signed by its maker, and returns
  /// where it lies. Throws std::system_error, or std::runtime_error when it cannot be signed.
  std::filesystem::path install(const std::filesystem::path& bundle) const;

  /// Where lines come from about what the desktop is asked to open. Called once. Throws
  /// std::system_error.
  Descriptor openedFiles() const;

  const std::filesystem::path& folder() const { return folder_; }
  SystemRoot root() const { return SystemRoot(folder_ / "root"); }
  std::filesystem::path home() const { return folder_ / "home"; }
  std::filesystem::path temporary() const { return folder_ / "tmp"; }
  std::filesystem::path drive() const {
    return home() / "Library/Mobile Documents/com~apple~CloudDocs";
  }

private:
  std::filesystem::path folder_;
};

} // namespace icloud
