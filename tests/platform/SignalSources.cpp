#include "platform/linux/SignalSources.h"

#include "EventLoop.h"
#include "platform/linux/QtMainQueue.h"

#include <csignal>
#include <thread>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

TEST(SignalSources, eachSignalBecomesATaskOnTheMainQueue) {
  QtMainQueue queue;
  int calls = 0;
  const std::thread::id here = std::this_thread::get_id();
  bool elsewhere = false;
  const SignalSources sources(queue, [&] {
    ++calls;
    elsewhere |= std::this_thread::get_id() != here;
  });
  std::raise(SIGTERM);
  EXPECT_EQ(calls, 0);
  ASSERT_TRUE(runUntil([&] { return calls == 1; }));
  std::raise(SIGINT);
  ASSERT_TRUE(runUntil([&] { return calls == 2; }));
  EXPECT_FALSE(elsewhere);
}

TEST(SignalSources, signalsThatComeTogetherAreOneCall) {
  QtMainQueue queue;
  int calls = 0;
  const SignalSources sources(queue, [&] { ++calls; });
  for (int time = 0; time < 100'000; ++time)
    std::raise(SIGTERM);
  ASSERT_TRUE(runUntil([&] { return calls > 0; }));
  runFor(Seconds(0.01));
  EXPECT_EQ(calls, 1);
}

TEST(SignalSources, formerActionsComeBack) {
  QtMainQueue queue;
  const auto before = std::signal(SIGINT, SIG_IGN);
  {
    const SignalSources sources(queue, [] {});
  }
  EXPECT_EQ(std::signal(SIGINT, before), SIG_IGN);
}

TEST(SignalSources, signalFromBeforeTheEndCallsNothingAfterIt) {
  QtMainQueue queue;
  int calls = 0;
  {
    const SignalSources sources(queue, [&] { ++calls; });
    std::raise(SIGTERM);
  }
  runFor(Seconds(0.01));
  EXPECT_EQ(calls, 0);
}

} // namespace
} // namespace driftmark::test
