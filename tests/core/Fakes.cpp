#include "support/TestPlatform.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

// What the fakes guarantee to tests beyond the contracts of their ports.

namespace driftmark::test {
namespace {

class FakesTest : public testing::Test {
protected:
  TestChild& spawn(const Arguments& arguments) {
    auto result = platform.childProcesses.spawn(
        {.executable = "/usr/bin/tool", .arguments = arguments},
        [this](std::string_view bytes) { chunks.emplace_back(bytes); }, [this] { ++exits; });
    terminalChild = std::get<TerminalChild>(std::move(result));
    return platform.childProcesses.child(arguments);
  }

  TestPlatform platform;
  TestMainQueue& queue = platform.mainQueue;
  TerminalChild terminalChild;
  std::vector<std::string> chunks;
  int exits = 0;
};

// ---- main queue and clock ----

TEST_F(FakesTest, timeStandsStillUnlessMoved) {
  const Date before = platform.clock.now();
  queue.async([] {});
  EXPECT_EQ(queue.runAll(), 1U);
  EXPECT_EQ(platform.clock.now(), before);
}

TEST_F(FakesTest, tasksDueAtSameTimeRunInOrderOfAdding) {
  std::string order;
  queue.after(Seconds(1), [&] { order += 'a'; });
  queue.after(Seconds(1), [&] { order += 'b'; });
  queue.async([&] { order += '0'; });
  queue.after(Seconds(1), [&] { order += 'c'; });
  queue.advance(Seconds(1));
  EXPECT_EQ(order, "0abc");
}

TEST_F(FakesTest, taskSeesItsOwnDueTime) {
  const Date start = platform.clock.now();
  std::vector<double> moments;
  const auto note = [&] { moments.push_back(Seconds(platform.clock.now() - start).count()); };
  queue.after(Seconds(2), note);
  queue.after(Seconds(1), [&] {
    note();
    queue.after(Seconds(0.5), note);
    queue.async(note);
  });
  EXPECT_EQ(queue.advance(Seconds(5)), 4U);
  EXPECT_EQ(moments, (std::vector<double>{1, 1, 1.5, 2}));
  EXPECT_EQ(platform.clock.now(), later(start, Seconds(5)));
}

TEST_F(FakesTest, runAllLeavesLaterTasksWaiting) {
  int ran = 0;
  queue.after(Seconds(1), [&] { ++ran; });
  EXPECT_EQ(queue.runAll(), 0U);
  EXPECT_EQ(queue.waiting(), std::vector<Seconds>{Seconds(1)});
  queue.advance(Seconds(0.4));
  EXPECT_EQ(queue.waiting(), std::vector<Seconds>{Seconds(0.6)});
  queue.advance(Seconds(0.6));
  EXPECT_EQ(ran, 1);
  EXPECT_TRUE(queue.waiting().empty());
}

TEST_F(FakesTest, clockJumpRunsNothing) {
  int ran = 0;
  queue.after(Seconds(1), [&] { ++ran; });
  platform.clock.jump(Seconds(100));
  queue.runAll();
  EXPECT_EQ(ran, 0);
  EXPECT_EQ(queue.waiting(), std::vector<Seconds>{Seconds(1)});
}

TEST_F(FakesTest, timerReportsSettingsAndRunsAtInterval) {
  int ran = 0;
  auto timer = queue.repeat(Seconds(2), Seconds(0.2), [&] { ++ran; });
  EXPECT_EQ(queue.timers(), (std::vector<TestMainQueue::TimerSettings>{
                                {.interval = Seconds(2), .tolerance = Seconds(0.2)}}));
  EXPECT_TRUE(queue.waiting().empty());
  queue.advance(Seconds(5.9));
  EXPECT_EQ(ran, 2);
  queue.advance(Seconds(0.1));
  EXPECT_EQ(ran, 3);
  timer.reset();
  EXPECT_TRUE(queue.timers().empty());
  EXPECT_FALSE(queue.advanceToNext());
}

TEST_F(FakesTest, timerMayOutliveQueue) {
  TestClock clock;
  auto shortLived = std::make_unique<TestMainQueue>(clock);
  const auto token = std::make_shared<int>(0);
  auto timer = shortLived->repeat(Seconds(1), Seconds(0), [token] {});
  shortLived.reset();
  EXPECT_EQ(token.use_count(), 1);
  timer.reset();
}

TEST_F(FakesTest, runningQueueFromItsOwnTaskIsError) {
  bool refused = false;
  queue.async([&] {
    try {
      queue.runAll();
    } catch (const std::logic_error&) {
      refused = true;
    }
  });
  queue.runAll();
  EXPECT_TRUE(refused);
}

// ---- background queue ----

TEST_F(FakesTest, backgroundTasksWaitForTest) {
  std::string order;
  EXPECT_FALSE(platform.backgroundQueue.async(QualityOfService::utility, [&] { order += 'a'; }));
  EXPECT_FALSE(
      platform.backgroundQueue.async(QualityOfService::userInitiated, [&] { order += 'b'; }));
  EXPECT_EQ(order, "");
  EXPECT_EQ(platform.backgroundQueue.waiting(), 2U);
  EXPECT_EQ(
      platform.backgroundQueue.qualities(),
      (std::vector<QualityOfService>{QualityOfService::utility, QualityOfService::userInitiated}));
  EXPECT_TRUE(platform.backgroundQueue.runNext());
  EXPECT_EQ(order, "a");
  EXPECT_EQ(platform.backgroundQueue.runAll(), 1U);
  EXPECT_EQ(order, "ab");
  EXPECT_FALSE(platform.backgroundQueue.runNext());
}

TEST_F(FakesTest, backgroundTasksMayRunOnThreads) {
  platform.backgroundQueue.setMode(TestBackgroundQueue::Mode::thread);
  std::thread::id ranOn;
  EXPECT_FALSE(platform.backgroundQueue.async(QualityOfService::utility,
                                              [&] { ranOn = std::this_thread::get_id(); }));
  platform.backgroundQueue.join();
  EXPECT_NE(ranOn, std::thread::id());
  EXPECT_NE(ranOn, std::this_thread::get_id());
}

// ---- children ----

TEST_F(FakesTest, waitingOutputIsJoinedIntoOneChunk) {
  TestChild& child = spawn({"a"});
  child.print("one ");
  child.print("two");
  EXPECT_TRUE(chunks.empty());
  queue.runAll();
  child.print("three");
  queue.runAll();
  EXPECT_EQ(chunks, (std::vector<std::string>{"one two", "three"}));
}

TEST_F(FakesTest, outputLargerThanChunkArrivesInSeveral) {
  TestChild& child = spawn({"a"});
  child.print(std::string(2 * ChildProcesses::maxChunkSize + 5, 'x'));
  child.exit();
  queue.runAll();
  ASSERT_EQ(chunks.size(), 3U);
  EXPECT_EQ(chunks[0].size(), ChildProcesses::maxChunkSize);
  EXPECT_EQ(chunks[1].size(), ChildProcesses::maxChunkSize);
  EXPECT_EQ(chunks[2].size(), 5U);
  EXPECT_EQ(exits, 1);
}

TEST_F(FakesTest, childPrintsNothingAfterExitAndExitsOnce) {
  TestChild& child = spawn({"a"});
  child.exit();
  EXPECT_THROW(child.print("x"), std::logic_error);
  EXPECT_THROW(child.exit(), std::logic_error);
  queue.runAll();
  EXPECT_EQ(exits, 1);
}

TEST_F(FakesTest, identifiersGrow) {
  const int first = spawn({"a"}).identifier();
  const int second = spawn({"b"}).identifier();
  EXPECT_GT(second, first);
}

TEST_F(FakesTest, childReportsWhetherItIsHeldAndRead) {
  const TestChild& child = spawn({"a"});
  EXPECT_TRUE(child.isHeld());
  EXPECT_TRUE(child.isRead());
  terminalChild.masterHandle.reset();
  EXPECT_FALSE(child.isRead());
  EXPECT_TRUE(child.isHeld());
  terminalChild.process.reset();
  EXPECT_FALSE(child.isHeld());
  EXPECT_TRUE(child.isRunning());
}

TEST_F(FakesTest, childMayIgnoreTerminateRequests) {
  TestChild& child = spawn({"a"});
  child.ignoreTerminate();
  terminalChild.process->terminate();
  queue.runAll();
  EXPECT_TRUE(child.isRunning());
  EXPECT_EQ(child.terminateRequests(), 1);
  EXPECT_EQ(exits, 0);
}

TEST_F(FakesTest, childrenAreFoundByArguments) {
  spawn({"a"});
  spawn({"b"});
  const TestChild& youngest = spawn({"a"});
  EXPECT_EQ(platform.childProcesses.children().size(), 3U);
  EXPECT_EQ(platform.childProcesses.children({"a"}).size(), 2U);
  EXPECT_EQ(&platform.childProcesses.child({"a"}), &youngest);
  EXPECT_THROW(platform.childProcesses.child({"c"}), std::logic_error);
}

TEST_F(FakesTest, everyLaunchStageCanFail) {
  for (const LaunchError::Stage stage :
       {LaunchError::Stage::allocateTerminal, LaunchError::Stage::openTerminal,
        LaunchError::Stage::launch}) {
    platform.childProcesses.failLaunches({"a"}, {.stage = stage, .description = "no luck"});
    const auto result = platform.childProcesses.spawn(
        {.executable = "/usr/bin/tool", .arguments = {"a"}}, [](std::string_view) {}, [] {});
    const auto* error = std::get_if<LaunchError>(&result);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->stage, stage);
    EXPECT_EQ(error->description, "no luck");
  }
  EXPECT_EQ(platform.childProcesses.spawnAttempts().size(), 3U);
  EXPECT_TRUE(platform.childProcesses.children().empty());
  spawn({"b"});
  platform.childProcesses.allowLaunches();
  spawn({"a"});
  EXPECT_EQ(platform.childProcesses.children().size(), 2U);
}

// ---- runs ----

TEST_F(FakesTest, runReturnsResultScriptedForItsArguments) {
  platform.childProcesses.script({"a"}, ToolResult{.output = "text", .exitStatus = 3});
  const auto run = [this](const Arguments& arguments) {
    return std::get<ToolResult>(
        platform.childProcesses
            .prepare({.executable = "/usr/bin/tool", .arguments = arguments}, ToolOutput::capture)
            ->run());
  };
  EXPECT_EQ(run({"a"}).output, "text");
  EXPECT_EQ(run({"a"}).exitStatus, 3);
  EXPECT_EQ(run({"b"}).output, "");
  EXPECT_EQ(run({"b"}).exitStatus, 0);
  EXPECT_EQ(platform.childProcesses.runs({"a"}).size(), 2U);
}

TEST_F(FakesTest, runningTwiceIsError) {
  const auto run = platform.childProcesses.prepare({.executable = "/usr/bin/tool", .arguments = {}},
                                                   ToolOutput::capture);
  run->run();
  EXPECT_THROW(run->run(), std::logic_error);
}

TEST_F(FakesTest, hangingRunEndsWhenReleased) {
  platform.childProcesses.script({"a"}, "text");
  platform.childProcesses.hang({"a"});
  const auto run = platform.childProcesses.prepare(
      {.executable = "/usr/bin/tool", .arguments = {"a"}}, ToolOutput::capture);
  std::variant<ToolResult, LaunchError> result;
  std::thread background([&] { result = run->run(); });
  EXPECT_TRUE(platform.childProcesses.awaitHanging({"a"}));
  EXPECT_TRUE(run->isRunning());
  platform.childProcesses.release({"a"});
  background.join();
  EXPECT_EQ(std::get<ToolResult>(result).output, "text");
  EXPECT_FALSE(run->isRunning());
}

TEST_F(FakesTest, runReportsWhetherItIsHeld) {
  auto run = platform.childProcesses.prepare({.executable = "/usr/bin/tool", .arguments = {}},
                                             ToolOutput::capture);
  const auto seen = platform.childProcesses.runs().front();
  EXPECT_TRUE(seen->isHeld());
  run.reset();
  EXPECT_FALSE(seen->isHeld());
}

TEST_F(FakesTest, platformMayBeDestroyedWhileRunsHang) {
  auto shortLived = std::make_unique<TestPlatform>();
  shortLived->backgroundQueue.setMode(TestBackgroundQueue::Mode::thread);
  shortLived->childProcesses.hang({"a"});
  const auto run = shortLived->childProcesses.prepare(
      {.executable = "/usr/bin/tool", .arguments = {"a"}}, ToolOutput::capture);
  bool finished = false;
  EXPECT_FALSE(shortLived->backgroundQueue.async(QualityOfService::utility, [&] {
    run->run();
    finished = true;
  }));
  ASSERT_TRUE(shortLived->childProcesses.awaitHanging({"a"}));
  shortLived.reset();
  EXPECT_TRUE(finished);
}

// ---- the others ----

TEST_F(FakesTest, pathsAreComparedByteForByte) {
  platform.fileSystem.add("/caf\u00e9");
  EXPECT_TRUE(platform.fileSystem.fileExists("/caf\u00e9"));
  EXPECT_FALSE(platform.fileSystem.fileExists("/cafe\u0301"));
}

TEST_F(FakesTest, platformRunsUntilConditionHolds) {
  int ran = 0;
  queue.after(Seconds(100), [&] { ++ran; });
  EXPECT_TRUE(platform.runUntil([&] { return ran == 1; }));
}

} // namespace
} // namespace driftmark::test
