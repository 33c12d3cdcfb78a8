// What a launched tool inherits: descriptors, signals, session.

#include "platform/posix/children/LaunchTool.h"

#include "platform/posix/SystemCalls.h"
#include "platform/posix/SystemErrors.h"

#include <csignal>

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

extern "C" char**
    environ; // NOLINT(readability-redundant-declaration): not every system declares it

namespace driftmark {

namespace {

constexpr const char* nullDevicePath = "/dev/null";

/// What `posix_spawn` does between the fork and the start of the tool. Keeps the first error of its
/// set-up.
class SpawnPlan {
public:
  SpawnPlan(OutputRouting output, Session session) {
    if (session == Session::ofItsOwn)
      flags_ |= POSIX_SPAWN_SETSID;
    note(posix_spawn_file_actions_init(&actions_));
    note(posix_spawnattr_init(&attributes_));
    routeDescriptors(output);
    resetSignals();
    note(closeAllButStandard(attributes_, actions_, flags_));
    note(posix_spawnattr_setflags(&attributes_, flags_));
  }
  SpawnPlan(const SpawnPlan&) = delete;
  SpawnPlan& operator=(const SpawnPlan&) = delete;
  ~SpawnPlan() {
    posix_spawnattr_destroy(&attributes_);
    posix_spawn_file_actions_destroy(&actions_);
  }

  /// Starts the tool. Returns 0 or an error number.
  int spawn(pid_t& pid, const char* path, char* const* arguments) const {
    return error_ != 0 ? error_
                       : posix_spawn(&pid, path, &actions_, &attributes_, arguments, environ);
  }

private:
  void note(int error) {
    if (error_ == 0)
      error_ = error;
  }

  /// Sets standard input last, since an output descriptor may have the number 0.
  void routeDescriptors(OutputRouting output) {
    route(output.standardOutput, STDOUT_FILENO);
    route(output.standardError, STDERR_FILENO);
    note(posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, nullDevicePath, O_RDONLY, 0));
  }

  void route(int from, int to) {
    if (from == OutputRouting::nullDevice)
      note(posix_spawn_file_actions_addopen(&actions_, to, nullDevicePath, O_WRONLY, 0));
    else
      note(posix_spawn_file_actions_adddup2(&actions_, from, to));
  }

  void resetSignals() {
    sigset_t signals{};
    sigemptyset(&signals);
    note(posix_spawnattr_setsigmask(&attributes_, &signals));
    sigfillset(&signals);
    // These two cannot be set, and a system may refuse the attempt.
    sigdelset(&signals, SIGKILL);
    sigdelset(&signals, SIGSTOP);
    note(posix_spawnattr_setsigdefault(&attributes_, &signals));
    flags_ |= POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
  }

  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
  short flags_ = 0;
  int error_ = 0;
};

/// The argument list in the form of the system. The caller keeps owning the strings.
std::vector<char*> argumentPointers(const std::string& executable,
                                    const std::vector<std::string>& arguments) {
  std::vector<char*> pointers;
  pointers.reserve(arguments.size() + 2);
  // The system requires mutable pointers but does not write through them.
  pointers.push_back(const_cast<char*>(executable.c_str()));
  for (const std::string& argument : arguments)
    pointers.push_back(const_cast<char*>(argument.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

} // namespace

std::variant<pid_t, LaunchError> launchTool(const std::string& executable,
                                            const std::vector<std::string>& arguments,
                                            OutputRouting output, Session session) {
  const SpawnPlan plan(output, session);
  const std::vector<char*> pointers = argumentPointers(executable, arguments);
  pid_t pid = 0;
  const int error = plan.spawn(pid, executable.c_str(), pointers.data());
  if (error != 0)
    return launchError(LaunchError::Stage::launch, error);
  return pid;
}

} // namespace driftmark
