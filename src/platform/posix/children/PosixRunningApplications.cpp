#include "platform/posix/children/PosixRunningApplications.h"

#include <cerrno>
#include <csignal>

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
