#pragma once

#include <string>

namespace driftmark {

/// Why an operation of the system failed.
struct PlatformError {
  std::string description; ///< for the user, in the system's words
};

} // namespace driftmark
