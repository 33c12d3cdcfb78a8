#pragma once

#include "ports/Environment.h"

#include <string>
#include <variant>

namespace driftmark {

/// The folder that stands for "/" where the system's tools and folders are concerned.
class SystemRoot {
public:
  static constexpr const char* variableName = "DRIFTMARK_SYSTEM_ROOT";
  static constexpr const char* none = "/"; ///< what the variable stands for where it is not set

  /// Why there is no system root, for people.
  struct Error {
    std::string message;
  };

  /// What the variable names: the root itself when it is not set, an error when it is empty, not an
  /// absolute path, or not a folder.
  static std::variant<SystemRoot, Error> of(const Environment& environment);

  const std::string& path() const { return path_; }

private:
  explicit SystemRoot(std::string path) : path_(std::move(path)) {}

  std::string path_;
};

} // namespace driftmark
