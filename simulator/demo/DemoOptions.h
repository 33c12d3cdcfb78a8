#pragma once

#include "common/UsageError.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace icloud {

/// The command line of the demo.
struct DemoOptions {
  bool help = false;
  bool interactive = false;      ///< on the display, without the scenario's user
  std::filesystem::path program; ///< in a bundle: the bundle is installed first
  std::filesystem::path scenario;
  std::filesystem::path tools; ///< a system root to copy the tools from
  std::optional<std::filesystem::path> out;
  std::chrono::seconds timeout{150}; ///< after the time that the scenario takes

  static DemoOptions from(const std::vector<std::string>& arguments);
  static const char* usage();
};

} // namespace icloud
