// How programs are started and end, and how this process adopts descendants that lose their parent.

#include "process/ChildProcess.h"

#include "common/SystemFailure.h"
#include "process/Pipe.h"

#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstring>
#include <fstream>

#include <fcntl.h>
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

// Runs between fork and exec, so it makes system calls only. Writes errno to `report` when that
// fails.
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
  const int error = errno;
  [[maybe_unused]] const ssize_t written = write(report, &error, sizeof error);
  _exit(127);
}

struct ProcessStat {
  pid_t parent = 0;
  std::string name;
};

// The second field of a stat file is the name in parentheses, the fourth the parent. The result
// is empty when the process no longer exists.
ProcessStat readStat(pid_t process) {
  std::ifstream stream("/proc/" + std::to_string(process) + "/stat");
  std::string text(4096, '\0');
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(stream.gcount()));
  const auto open = text.find('(');
  const auto close = text.rfind(')');
  ProcessStat result;
  if (open == std::string::npos || close == std::string::npos || close + 4 > text.size())
    return result;
  result.name = text.substr(open + 1, close - open - 1);
  std::from_chars(text.data() + close + 4, text.data() + text.size(), result.parent);
  return result;
}

std::vector<Orphan> childrenExcept(const std::vector<pid_t>& known) {
  std::vector<Orphan> children;
  for (const pid_t child : childrenOf(getpid()))
    if (std::find(known.begin(), known.end(), child) == known.end())
      children.push_back({child, readStat(child).name});
  return children;
}

} // namespace

std::vector<pid_t> childrenOf(pid_t parent) {
  std::vector<pid_t> children;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    pid_t process = 0;
    const auto parsed = std::from_chars(name.data(), name.data() + name.size(), process);
    if (parsed.ec == std::errc{} && parsed.ptr == name.data() + name.size() &&
        readStat(process).parent == parent)
      children.push_back(process);
  }
  return children;
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

int ChildProcess::end(std::chrono::milliseconds gracePeriod) {
  signal(SIGTERM);
  if (!hasEnded() && !isReadableWithin(exit_.get(), gracePeriod))
    signal(SIGKILL);
  return wait();
}

std::string describeEnd(int status) {
  if (WIFEXITED(status))
    return "status " + std::to_string(WEXITSTATUS(status));
  const int number = WTERMSIG(status);
  return "signal " + std::to_string(number) + " (" + sigdescr_np(number) + ")";
}

void adoptOrphans() {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
}

std::vector<Orphan> collectOrphans(const std::vector<pid_t>& known,
                                   std::chrono::milliseconds gracePeriod) {
  const auto deadline = std::chrono::steady_clock::now() + gracePeriod;
  std::vector<Orphan> collected;
  while (true) {
    auto children = childrenExcept(known);
    if (children.empty())
      return collected;
    for (Orphan& orphan : children) {
      const Descriptor exit = openProcess(orphan.identifier);
      const auto left =
          std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
      orphan.wasKilled = !isReadableWithin(exit.get(), left);
      if (orphan.wasKilled)
        kill(orphan.identifier, SIGKILL);
      waitpid(orphan.identifier, &orphan.status, 0);
      collected.push_back(std::move(orphan));
    }
  }
}

} // namespace icloud
