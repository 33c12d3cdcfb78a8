#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace icloud {

/// A command line that makes no sense.
class UsageError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// What `codesign` is asked to do.
struct Command {
  enum class Kind { verify, display, sign };

  Kind kind = Kind::verify;
  bool strict = false;
  bool force = false;
  unsigned verbosity = 0;
  std::string identity = "-"; ///< of sign
  std::vector<std::string> paths;

  static Command from(const std::vector<std::string>& arguments);
  static const char* usage();
};

} // namespace icloud
