#pragma once

#include <string>
#include <vector>

namespace icloud {

/// The command line of `codesign`.
struct Command {
  enum class Kind { verify, display, sign };

  Kind kind = Kind::verify;
  bool strict = false;
  bool force = false;
  unsigned verbosity = 0;
  std::string identity = "-"; ///< of sign
  std::vector<std::string> paths;

  /// Throws UsageError.
  static Command from(const std::vector<std::string>& arguments);
  static const char* usage();
};

} // namespace icloud
