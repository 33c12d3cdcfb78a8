// The queues, the children and the signals keep the contracts of their ports.

#include "harness/TemporaryFolder.h"
#include "macos/RunLoop.h"
#include "platform/macos/MacAdapters.h"
#include "platform/macos/MacMainQueue.h"
#include "platform/posix/children/PosixChildProcesses.h"
#include "support/contracts/BackgroundQueueContract.h"
#include "support/contracts/ChildProcessesContract.h"
#include "support/contracts/MainQueueContract.h"
#include "support/contracts/SignalsContract.h"

#include <chrono>
#include <csignal>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

namespace driftmark::test {
namespace {

using testing::Values;

class RealMainQueue final : public MainQueueSubject {
public:
  MainQueue& queue() override { return *queue_; }
  bool runUntil(const std::function<bool()>& done) override { return test::runUntil(done); }
  Seconds elapsed() const override { return std::chrono::steady_clock::now().time_since_epoch(); }
  void destroy() override { queue_.reset(); }

private:
  std::optional<MacMainQueue> queue_{std::in_place};
};

INSTANTIATE_TEST_SUITE_P(Mac, MainQueueContract,
                         Values(subject<MainQueueSubject, RealMainQueue>("real")), subjectName);

class RealBackgroundQueue final : public BackgroundQueueSubject {
public:
  BackgroundQueue& queue() override { return *queue_; }
  bool waitUntil(const std::function<bool()>& done) override { return test::runUntil(done); }
  void destroy() override { queue_.reset(); }

private:
  MacMainQueue mainQueue_; ///< the run loop waits while it has a source
  std::optional<MacBackgroundQueue> queue_{std::in_place};
};

INSTANTIATE_TEST_SUITE_P(Mac, BackgroundQueueContract,
                         Values(subject<BackgroundQueueSubject, RealBackgroundQueue>("real")),
                         subjectName);

class RealChildProcesses final : public ChildProcessesSubject {
public:
  RealChildProcesses() { folder_.write("forbidden", "#!/bin/sh\n"); }

  ChildProcesses& childProcesses() override { return children_; }
  bool runUntil(const std::function<bool()>& done) override { return test::runUntil(done); }
  void async(std::function<void()> task) override { mainQueue_.async(std::move(task)); }
  ToolCommand tool(const std::vector<std::string>& steps) override { return {CHILD_TOOL, steps}; }
  ToolCommand missingTool() override { return {folder_.path("missing"), {}}; }
  ToolCommand forbiddenTool() override { return {folder_.path("forbidden"), {}}; }

private:
  TemporaryFolder folder_;
  MacMainQueue mainQueue_;
  PosixChildProcesses children_{mainQueue_, ""};
};

INSTANTIATE_TEST_SUITE_P(Mac, ChildProcessesContract,
                         Values(subject<ChildProcessesSubject, RealChildProcesses>("real")),
                         subjectName);

int number(QuitSignal signal) {
  return signal == QuitSignal::terminate ? SIGTERM : SIGINT;
}

/// A source of the system only observes: the signals are ignored, so that this process survives.
class RealSignals final : public SignalsSubject {
public:
  RealSignals() { handle(SIG_IGN); }
  RealSignals(const RealSignals&) = delete;
  RealSignals& operator=(const RealSignals&) = delete;
  ~RealSignals() override { handle(SIG_DFL); }

  Signals& signals() override { return signals_; }
  void send(QuitSignal signal) override { kill(getpid(), number(signal)); }
  bool hasDefaultAction(QuitSignal signal) override {
    struct sigaction action {};
    sigaction(number(signal), nullptr, &action);
    return action.sa_handler == SIG_DFL;
  }
  bool runUntil(const std::function<bool()>& done) override { return test::runUntil(done); }

private:
  static void handle(void (*action)(int)) {
    std::signal(SIGTERM, action);
    std::signal(SIGINT, action);
  }

  MacMainQueue queue_;
  MacSignals signals_{queue_};
};

INSTANTIATE_TEST_SUITE_P(Mac, SignalsContract, Values(subject<SignalsSubject, RealSignals>("real")),
                         subjectName);

} // namespace
} // namespace driftmark::test
