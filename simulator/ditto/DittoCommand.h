#pragma once

#include <string>
#include <vector>

namespace icloud {

/// The command line of `ditto`.
struct Command {
  enum class Kind { copy, pack, unpack };

  Kind kind = Kind::copy;
  bool keepParent = false;
  std::string source;
  std::string target;

  /// Throws UsageError.
  static Command from(const std::vector<std::string>& arguments);
  static const char* usage();
};

} // namespace icloud
