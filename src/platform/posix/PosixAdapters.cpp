// How the environment is read, and how other instances of this program are signalled.

#include "platform/posix/PosixAdapters.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace driftmark {

namespace {

bool signalOne(std::int32_t process, int signal) {
  if (process <= 0) {
    errno = ESRCH;
    return false;
  }
  return ::kill(process, signal) == 0;
}

} // namespace

std::optional<std::string> PosixEnvironment::variable(const std::string& name) const {
  if (name.find('\0') != std::string::npos)
    return std::nullopt;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in this process writes the environment
  const char* const value = std::getenv(name.c_str());
  return value ? std::optional<std::string>(value) : std::nullopt;
}

void PosixRunningApplications::sendTerminate(std::int32_t process) {
  signalOne(process, SIGTERM);
}

void PosixRunningApplications::sendKill(std::int32_t process) {
  signalOne(process, SIGKILL);
}

bool PosixRunningApplications::isRunning(std::int32_t process) const {
  return signalOne(process, 0) || errno == EPERM;
}

} // namespace driftmark
