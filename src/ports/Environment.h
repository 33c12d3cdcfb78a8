#pragma once

#include <optional>
#include <string>

namespace driftmark {

/// The environment of this process.
class Environment {
public:
  virtual ~Environment() = default;

  /// The value of a variable; absent when it is not set. Main thread only.
  virtual std::optional<std::string> variable(const std::string& name) const = 0;
};

} // namespace driftmark
