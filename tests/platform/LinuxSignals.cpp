#include "platform/linux/runloop/LinuxSignals.h"

#include "Descriptors.h"
#include "harness/qt/EventLoop.h"
#include "platform/linux/runloop/LinuxMainQueue.h"
#include "support/contracts/SignalsContract.h"

#include <csignal>
#include <thread>

namespace driftmark::test {
namespace {

using testing::Values;

int number(QuitSignal signal) {
  return signal == QuitSignal::terminate ? SIGTERM : SIGINT;
}

class RealSignals final : public SignalsSubject {
public:
  RealSignals() = default;
  RealSignals(const RealSignals&) = delete;
  RealSignals& operator=(const RealSignals&) = delete;
  ~RealSignals() override {
    std::signal(SIGTERM, SIG_DFL);
    std::signal(SIGINT, SIG_DFL);
  }

  Signals& signals() override { return signals_; }
  void send(QuitSignal signal) override { std::raise(number(signal)); }
  bool hasDefaultAction(QuitSignal signal) override {
    struct sigaction action {};
    sigaction(number(signal), nullptr, &action);
    return action.sa_handler == SIG_DFL;
  }
  bool runUntil(const std::function<bool()>& done) override { return test::runUntil(done); }

private:
  LinuxMainQueue queue_;
  LinuxSignals signals_{queue_};
};

INSTANTIATE_TEST_SUITE_P(Linux, SignalsContract,
                         Values(subject<SignalsSubject, RealSignals>("real")), subjectName);

class LinuxSignalsTest : public testing::Test {
protected:
  LinuxMainQueue queue;
  LinuxSignals signals{queue};
};

TEST_F(LinuxSignalsTest, handlerRunsOnMainThread) {
  std::thread::id where;
  const auto source =
      signals.makeSource(QuitSignal::terminate, [&] { where = std::this_thread::get_id(); });
  std::thread([] { std::raise(SIGTERM); }).join();
  ASSERT_TRUE(runUntil([&] { return where != std::thread::id(); }));
  EXPECT_EQ(where, std::this_thread::get_id());
}

TEST_F(LinuxSignalsTest, signalsInBurstGiveOneCall) {
  int calls = 0;
  const auto source = signals.makeSource(QuitSignal::terminate, [&] { ++calls; });
  for (int time = 0; time < 100'000; ++time)
    std::raise(SIGTERM);
  ASSERT_TRUE(runUntil([&] { return calls > 0; }));
  runFor(Seconds(0.01));
  EXPECT_EQ(calls, 1);
}

TEST_F(LinuxSignalsTest, signalIsIgnoredAgainWithoutSource) {
  const auto before = std::signal(SIGINT, SIG_DFL);
  signals.ignore(QuitSignal::interrupt);
  signals.makeSource(QuitSignal::interrupt, [] {}).reset();
  EXPECT_EQ(std::signal(SIGINT, before), SIG_IGN);
}

TEST_F(LinuxSignalsTest, sourceWithoutDescriptorsIsNotMade) {
  const DescriptorLimit limit(1);
  EXPECT_EQ(signals.makeSource(QuitSignal::terminate, [] {}), nullptr);
}

} // namespace
} // namespace driftmark::test
