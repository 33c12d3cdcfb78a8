// How children are launched and recorded, and how all of them end together.

#include "platform/posix/children/ChildRegistry.h"

#include "platform/posix/SystemErrors.h"
#include "platform/posix/children/LiveChildren.h"
#include "platform/posix/files/SystemRootPath.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <optional>
#include <system_error>
#include <utility>

#include <sys/wait.h>

namespace driftmark {

namespace {

Pipe requirePipe() {
  std::optional<Pipe> pipe = makePipe();
  if (!pipe)
    throw std::system_error(errno, std::generic_category(), "pipe");
  return std::move(*pipe);
}

/// Ends a child whose exit cannot be watched.
LaunchError discard(pid_t pid, int code) {
  ::kill(pid, SIGKILL);
  PosixChildProcess(pid, {}).reap();
  return launchError(LaunchError::Stage::launch, code);
}

} // namespace

ChildRegistry::ChildRegistry(const std::string& systemRoot)
    : systemRoot_(systemRootPrefix(systemRoot)), closing_(requirePipe()) {}

std::variant<std::shared_ptr<PosixChildProcess>, LaunchError>
ChildRegistry::launch(const ToolCommand& command, OutputRouting output) {
  // Locked during the launch, so that `endAll` misses no child.
  const std::lock_guard lock(mutex_);
  const LiveChildren::Launch launch;
  if (!closing_.writeEnd.isOpen() || !LiveChildren::Launch::isAllowed())
    return launchError(LaunchError::Stage::launch, ECANCELED);

  auto launched = launchTool(systemRoot_ + command.executable, command.arguments, output);
  if (auto* const error = std::get_if<LaunchError>(&launched))
    return std::move(*error);
  const pid_t pid = std::get<pid_t>(launched);
  LiveChildren::add(pid);
  FileDescriptor exit = watchExit(pid);
  if (!exit.isOpen())
    return discard(pid, errno);
  return children_.emplace_back(std::make_shared<PosixChildProcess>(pid, std::move(exit)));
}

std::optional<LaunchError> ChildRegistry::launchDetached(const ToolCommand& command) {
  const std::lock_guard lock(mutex_);
  if (!closing_.writeEnd.isOpen())
    return launchError(LaunchError::Stage::launch, ECANCELED);

  auto launched =
      launchTool(systemRoot_ + command.executable, command.arguments, {}, Session::ofItsOwn);
  if (auto* const error = std::get_if<LaunchError>(&launched))
    return std::move(*error);
  detached_.push_back(std::get<pid_t>(launched));
  return std::nullopt;
}

void ChildRegistry::reapDetached() {
  const std::lock_guard lock(mutex_);
  std::erase_if(detached_, [](pid_t pid) { return waitpid(pid, nullptr, WNOHANG) != 0; });
}

int ChildRegistry::reap(PosixChildProcess& child) {
  const int status = child.reap();
  const std::lock_guard lock(mutex_);
  std::erase_if(children_, [&](const auto& each) { return each.get() == &child; });
  reaped_.notify_all();
  return status;
}

void ChildRegistry::endAll() {
  {
    const std::lock_guard lock(mutex_);
    closing_.writeEnd.reset();
  }
  signalAll(&PosixChildProcess::terminate);
  if (awaitAll())
    return;
  signalAll(&PosixChildProcess::kill);
  awaitAll();
}

void ChildRegistry::signalAll(void (PosixChildProcess::*signal)()) {
  const std::lock_guard lock(mutex_);
  for (const auto& child : children_)
    (*child.*signal)();
}

bool ChildRegistry::awaitAll() {
  std::unique_lock lock(mutex_);
  return reaped_.wait_for(lock, gracePeriod, [this] { return children_.empty(); });
}

} // namespace driftmark
