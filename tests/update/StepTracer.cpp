// How tests stop a program at each step of an install.

#include "update/StepTracer.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdint>
#include <optional>
#include <utility>

#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>

namespace driftmark::test {
namespace {

constexpr int systemCallStop = SIGTRAP | 0x80;

bool isStep(std::uint64_t call) {
  constexpr std::array<std::uint64_t, 7> steps{SYS_rename, SYS_renameat, SYS_renameat2, SYS_fork,
                                               SYS_vfork,  SYS_clone,    SYS_clone3};
  return std::find(steps.begin(), steps.end(), call) != steps.end();
}

/// The number of the system call that the process is about to make; absent at any other stop.
std::optional<std::uint64_t> nextCall(pid_t process) {
  __ptrace_syscall_info info{};
  if (ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof info, &info) <= 0 ||
      info.op != PTRACE_SYSCALL_INFO_ENTRY)
    return std::nullopt;
  return info.entry.nr;
}

/// Waits for the next stop. Absent when the process has ended; its parent still has to reap it.
std::optional<int> nextStop(pid_t process) {
  siginfo_t event{};
  if (waitid(P_PID, static_cast<id_t>(process), &event, WEXITED | WSTOPPED | __WALL | WNOWAIT) !=
          0 ||
      event.si_code == CLD_EXITED || event.si_code == CLD_KILLED || event.si_code == CLD_DUMPED)
    return std::nullopt;
  int status = 0;
  waitpid(process, &status, __WALL | WUNTRACED);
  return status;
}

} // namespace

StepTracer::StepTracer(pid_t process, Decision onStep)
    : process_(process), onStep_(std::move(onStep)) {
  std::promise<bool> started;
  auto result = started.get_future();
  thread_ =
      std::thread([this, started = std::move(started)]() mutable { trace(std::move(started)); });
  isTracing_ = result.get();
}

StepTracer::~StepTracer() {
  if (isTracing_ && !hasEnded_)
    kill(process_, SIGKILL);
  awaitEnd();
}

void StepTracer::awaitEnd() {
  if (thread_.joinable())
    thread_.join();
}

void StepTracer::trace(std::promise<bool> started) {
  const bool seized = seize();
  started.set_value(seized);
  if (seized)
    takeSteps();
  hasEnded_ = true;
}

bool StepTracer::seize() const {
  return ptrace(PTRACE_SEIZE, process_, nullptr, PTRACE_O_TRACESYSGOOD) == 0 &&
         ptrace(PTRACE_INTERRUPT, process_, nullptr, nullptr) == 0;
}

void StepTracer::takeSteps() {
  int step = 0;
  while (const auto status = nextStop(process_)) {
    const int stop = WSTOPSIG(*status);
    const bool isEvent = *status >> 16 != 0;
    const auto call = stop == systemCallStop ? nextCall(process_) : std::nullopt;
    if (call && isStep(*call) && onStep_(++step) == Verdict::kill) {
      kill(process_, SIGKILL);
      return;
    }
    resume(stop == systemCallStop || isEvent ? 0 : stop);
  }
}

void StepTracer::resume(int signal) const {
  ptrace(PTRACE_SYSCALL, process_, nullptr, signal);
}

} // namespace driftmark::test
