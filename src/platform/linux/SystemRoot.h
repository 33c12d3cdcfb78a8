#pragma once

#include "ports/Environment.h"

#include <string>
#include <variant>

namespace driftmark {

/// The folder that replaces "/" in the paths of the system's tools and of the applications folder.
class SystemRoot {
public:
  static constexpr const char* variableName = "DRIFTMARK_SYSTEM_ROOT";
  static constexpr const char* none = "/"; ///< the path when the variable is not set

  /// Why the variable names no system root, to show to the user.
  struct Error {
    std::string message;
  };

  /// Reads the variable. An error when it is set and is empty, not an absolute path, or not a
  /// folder.
  static std::variant<SystemRoot, Error> of(const Environment& environment);

  const std::string& path() const { return path_; }

private:
  explicit SystemRoot(std::string path) : path_(std::move(path)) {}

  std::string path_;
};

} // namespace driftmark
