#include "platform/posix/PosixEnvironment.h"

#include <cstdlib>

namespace driftmark {

std::optional<std::string> PosixEnvironment::variable(const std::string& name) const {
  if (name.find('\0') != std::string::npos)
    return std::nullopt;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in this process writes the environment
  const char* const value = std::getenv(name.c_str());
  return value ? std::optional<std::string>(value) : std::nullopt;
}

} // namespace driftmark
