#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace icloud {

/// A command line that makes no sense.
class UsageError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// What the demo is told when it is started.
struct DemoOptions {
  bool help = false;
  bool interactive = false;      ///< on the display; whoever sits there is the user
  std::filesystem::path program; ///< in a bundle: the bundle is installed first
  std::filesystem::path scenario;
  std::filesystem::path tools; ///< a system root to copy the tools from
  std::optional<std::filesystem::path> out;
  std::chrono::seconds limit{150};

  static DemoOptions from(const std::vector<std::string>& arguments);
  static const char* usage();
};

} // namespace icloud
