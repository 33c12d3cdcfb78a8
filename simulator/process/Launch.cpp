#include "process/Launch.h"

#include "common/SystemFailure.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>

namespace icloud {
namespace {

std::vector<std::string> environmentOf(const Launch& launch) {
  std::vector<std::string> result;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (!launch.environment.contains(text.substr(0, text.find('='))))
      result.push_back(text);
  }
  for (const auto& [name, value] : launch.environment)
    if (value)
      result.push_back(name + "=" + *value);
  return result;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts)
    pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

// Between fork and exec: system calls only.
[[noreturn]] void becomeProgram(const Launch& launch, pid_t parent, char** arguments,
                                char** environment, int null, int report) {
  sigset_t none;
  sigemptyset(&none);
  pthread_sigmask(SIG_SETMASK, &none, nullptr);
  std::signal(SIGPIPE, SIG_DFL);
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != parent)
    _exit(127);
  dup2(null, STDIN_FILENO);
  if (launch.output >= 0)
    dup2(launch.output, STDOUT_FILENO);
  if (launch.error >= 0)
    dup2(launch.error, STDERR_FILENO);
  execve(launch.program.c_str(), arguments, environment);
  const int problem = errno;
  [[maybe_unused]] const ssize_t written = write(report, &problem, sizeof problem);
  _exit(127);
}

} // namespace

Pipe makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0)
    throwSystemFailure("cannot make a pipe");
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

bool isReadableWithin(int descriptor, std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  pollfd wait{descriptor, POLLIN, 0};
  while (true) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    const int ready = poll(&wait, 1, static_cast<int>(std::max<long>(left.count(), 0)));
    if (ready >= 0)
      return ready > 0;
  }
}

Descriptor openProcess(pid_t process) {
  return Descriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
}

ChildProcess::ChildProcess(const Launch& launch) {
  std::vector<std::string> argumentTexts{launch.program.string()};
  argumentTexts.insert(argumentTexts.end(), launch.arguments.begin(), launch.arguments.end());
  std::vector<std::string> environmentTexts = environmentOf(launch);
  const auto arguments = pointersTo(argumentTexts);
  const auto environment = pointersTo(environmentTexts);
  const Descriptor null(open("/dev/null", O_RDWR | O_CLOEXEC));
  Pipe report = makePipe();

  const pid_t parent = getpid();
  identifier_ = fork();
  if (identifier_ < 0)
    throwSystemFailure("cannot start a process");
  if (identifier_ == 0)
    becomeProgram(launch, parent, const_cast<char**>(arguments.data()),
                  const_cast<char**>(environment.data()), null.get(), report.writing.get());
  exit_ = openProcess(identifier_);
  report.writing.reset();
  int problem = 0;
  if (read(report.reading.get(), &problem, sizeof problem) == sizeof problem) {
    wait();
    throwSystemFailure("cannot run " + launch.program.string(), problem);
  }
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : identifier_(std::exchange(other.identifier_, 0)), exit_(std::move(other.exit_)),
      status_(other.status_) {}

ChildProcess::~ChildProcess() {
  if (identifier_ == 0 || hasEnded())
    return;
  signal(SIGKILL);
  wait();
}

void ChildProcess::signal(int number) const {
  if (!hasEnded())
    kill(identifier_, number);
}

int ChildProcess::wait() {
  while (!status_) {
    int status = 0;
    if (waitpid(identifier_, &status, 0) == identifier_)
      status_ = status;
    else if (errno != EINTR)
      throwSystemFailure("cannot wait for a process");
  }
  return *status_;
}

int ChildProcess::end(std::chrono::milliseconds grace) {
  signal(SIGTERM);
  if (!hasEnded() && !isReadableWithin(exit_.get(), grace))
    signal(SIGKILL);
  return wait();
}

std::string describeEnd(int status) {
  if (WIFEXITED(status))
    return "status " + std::to_string(WEXITSTATUS(status));
  const int number = WTERMSIG(status);
  return "signal " + std::to_string(number) + " (" + sigdescr_np(number) + ")";
}

} // namespace icloud
