// How one child is signalled and reaped, so that no signal reaches a process that reuses its
// identifier.

#include "platform/posix/children/PosixChildProcess.h"

#include "platform/posix/children/LiveChildren.h"

#include <cerrno>
#include <csignal>
#include <utility>

#include <sys/wait.h>

namespace driftmark {

namespace {

int waitForEnd(pid_t pid) {
  int status = 0;
  while (waitpid(pid, &status, 0) < 0) {
    if (errno != EINTR)
      return 0;
  }
  return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace

PosixChildProcess::PosixChildProcess(pid_t pid, FileDescriptor exitDescriptor)
    : pid_(pid), exitDescriptor_(std::move(exitDescriptor)) {}

bool PosixChildProcess::isRunning() const {
  const std::lock_guard lock(mutex_);
  return running_;
}

void PosixChildProcess::terminate() {
  send(SIGTERM);
}

void PosixChildProcess::kill() {
  send(SIGKILL);
}

void PosixChildProcess::send(int signal) {
  const std::lock_guard lock(mutex_);
  if (running_)
    ::kill(pid_, signal);
}

int PosixChildProcess::reap() {
  exitDescriptor_.reset();
  const std::lock_guard lock(mutex_);
  running_ = false;
  LiveChildren::remove(pid_);
  return waitForEnd(pid_);
}

} // namespace driftmark
