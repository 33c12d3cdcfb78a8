// What is done before a crash ends the process, in the thread that crashes.

#include "platform/posix/CrashHandler.h"

#include "platform/posix/children/LiveChildren.h"
#include "support/Log.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <string>

namespace driftmark {

namespace {

/// The signals of a crash. Handlers receive no pointer, so what they use is global.
constexpr std::array crashSignals{SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGTRAP};
std::array<struct sigaction, crashSignals.size()> actionsBefore{};
std::terminate_handler terminateBefore = nullptr;
std::atomic<SystemLog*> reasonLog = nullptr;
std::atomic<bool> crashing = false;

/// The stack of the handler in the main thread, whose own stack may be full.
alignas(std::max_align_t) std::array<std::byte, 65536> handlerStack;
stack_t stackBefore{};

/// Logs the reason of the first crash: one while it is logged ends the process at once.
void report(const char* kind, const char* reason) {
  LiveChildren::killAll();
  if (crashing.exchange(true))
    std::abort();
  if (SystemLog* const systemLog = reasonLog)
    log(*systemLog, {kind, reason});
}

void handleFatalError(const char* what) {
  report("fatal error: ", what);
}

void handleTerminate() {
  const std::exception_ptr uncaught = std::current_exception();
  try {
    if (uncaught)
      std::rethrow_exception(uncaught);
    report("terminated", "");
  } catch (const std::exception& error) {
    report("uncaught exception: ", error.what());
  } catch (...) {
    report("uncaught exception", "");
  }
  terminateBefore();
}

/// Whether the instruction that caused the signal is executed again when the handler returns.
bool isRepeated(int signal, const siginfo_t& info) {
  return signal != SIGABRT && signal != SIGTRAP && info.si_code > 0 && info.si_code != SI_USER;
}

void handleSignal(int signal, siginfo_t* info, void* /*context*/) {
  const int error = errno;
  LiveChildren::killAll();
  for (std::size_t i = 0; i < crashSignals.size(); ++i)
    if (crashSignals[i] == signal)
      sigaction(signal, &actionsBefore[i], nullptr);
  if (!isRepeated(signal, *info))
    raise(signal);
  errno = error;
}

} // namespace

CrashHandler::CrashHandler(SystemLog& systemLog) {
  reasonLog = &systemLog;
  onFatalError = handleFatalError;
  terminateBefore = std::set_terminate(handleTerminate);
  stack_t stack{};
  stack.ss_sp = handlerStack.data();
  stack.ss_size = handlerStack.size();
  sigaltstack(&stack, &stackBefore);
  struct sigaction action {};
  action.sa_sigaction = handleSignal;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  for (std::size_t i = 0; i < crashSignals.size(); ++i)
    sigaction(crashSignals[i], &action, &actionsBefore[i]);
}

CrashHandler::~CrashHandler() {
  for (std::size_t i = 0; i < crashSignals.size(); ++i)
    sigaction(crashSignals[i], &actionsBefore[i], nullptr);
  sigaltstack(&stackBefore, nullptr);
  std::set_terminate(terminateBefore);
  onFatalError = nullptr;
  reasonLog = nullptr;
}

} // namespace driftmark
