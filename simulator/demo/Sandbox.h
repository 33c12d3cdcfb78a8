#pragma once

#include "common/Descriptor.h"
#include "common/SystemRoot.h"
#include "process/ChildProcess.h"

#include <filesystem>
#include <optional>
#include <string>

namespace icloud {

/// Where a program draws its windows.
enum class Screen {
  display, ///< that of whoever started this process
  memory,
};

/// A folder that stands for a machine: a system root with the tools in it, and beside it an empty
/// home and a folder for temporary files. The folder is temporary and removed with this object.
class Sandbox {
public:
  /// Copies the tools from the system root `tools`. Throws std::system_error.
  explicit Sandbox(const std::filesystem::path& tools);
  Sandbox(const Sandbox&) = delete;
  Sandbox& operator=(const Sandbox&) = delete;
  ~Sandbox();

  /// Prepares the home for `program` and returns how to start it here. A program inside a bundle
  /// is started from a copy of the bundle in the root's /Applications, signed by its vendor.
  /// `stallAfter` is in seconds, as a decimal number. Throws std::exception.
  Launch programLaunch(const std::filesystem::path& program, Screen screen,
                       const std::optional<std::string>& stallAfter = std::nullopt) const;

  /// A pipe of lines, one for each file that the desktop is asked to open. Called once. Throws
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
  std::filesystem::path install(const std::filesystem::path& bundle) const;
  std::filesystem::path installedProgram(const std::filesystem::path& program) const;

  std::filesystem::path folder_;
};

} // namespace icloud
