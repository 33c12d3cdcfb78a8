#pragma once

#include <stdexcept>
#include <string>

namespace icloud {

/// A scenario that cannot be played; the message begins with the file and the line.
class ScenarioError : public std::runtime_error {
public:
  ScenarioError(const std::string& file, unsigned line, const std::string& message)
      : std::runtime_error(file + ":" + std::to_string(line) + ": " + message) {}
};

} // namespace icloud
