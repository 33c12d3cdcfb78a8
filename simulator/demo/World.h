#pragma once

#include "common/SystemRoot.h"

#include <filesystem>

namespace icloud {

/// A system root with the tools in it and an empty home, in a temporary folder that goes with this
/// object.
class World {
public:
  /// Takes the tools from the system root `tools`. Throws std::system_error.
  explicit World(const std::filesystem::path& tools);
  World(const World&) = delete;
  World& operator=(const World&) = delete;
  ~World();

  const std::filesystem::path& folder() const { return folder_; }
  SystemRoot root() const { return SystemRoot(folder_ / "root"); }
  std::filesystem::path home() const { return folder_ / "home"; }
  std::filesystem::path drive() const {
    return home() / "Library/Mobile Documents/com~apple~CloudDocs";
  }

private:
  std::filesystem::path folder_;
};

} // namespace icloud
