// What happens to output that comes faster than the main thread reads it.

#include "ChildProcessesTest.h"
#include "FloodPattern.h"
#include "harness/TemporaryFolder.h"
#include "harness/qt/EventLoop.h"

#include <algorithm>
#include <array>
#include <functional>
#include <string>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

class FloodsOfOutput : public ChildProcessesTest {
protected:
  static std::string recordCount(std::size_t bytes) {
    return std::to_string(bytes / FloodPattern::recordSize);
  }

  /// Reads a named pipe to its end, without running the main queue.
  static std::string readFifo(const std::string& path) {
    const FileDescriptor fifo(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::string text;
    std::array<char, 64> buffer{};
    for (ssize_t count = 1; count > 0;) {
      count = read(fifo.number(), buffer.data(), buffer.size());
      text.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(0, count)));
    }
    return text;
  }

  /// Waits for a child's end without running the main queue, and does not reap it.
  static void awaitEnd(int identifier) {
    siginfo_t information{};
    waitid(P_PID, static_cast<id_t>(identifier), &information, WEXITED | WNOWAIT);
  }
};

TEST_F(FloodsOfOutput, floodArrivesInOrderWhileOtherTasksRun) {
  constexpr std::size_t size = 100'000'000;
  FloodChecker checker;
  std::size_t chunks = 0;
  std::size_t chunksSinceOther = 0;
  std::size_t mostBetweenOthers = 0;
  const Tool tool = spawn({"flood", recordCount(size)}, [&](std::string_view bytes) {
    checker.check(bytes);
    ++chunks;
    mostBetweenOthers = std::max(mostBetweenOthers, ++chunksSinceOther);
  });
  const std::function<void()> other = [&] {
    chunksSinceOther = 0;
    if (tool->exits == 0)
      mainQueue_.async(other);
  };
  mainQueue_.async(other);
  int ticks = 0;
  const auto timer = mainQueue_.repeat(Seconds(0.005), Seconds(0), [&] { ++ticks; });
  ASSERT_TRUE(runUntil([&] { return tool->exits > 0; }));
  EXPECT_TRUE(checker.isRight());
  EXPECT_EQ(checker.received(), size);
  EXPECT_LE(mostBetweenOthers, 2U);
  EXPECT_GT(ticks, 3);
  EXPECT_GE(chunks, size / ChildProcesses::maxChunkSize);
}

TEST_F(FloodsOfOutput, floodIsHeldUpByTheTerminalWhileNothingIsRead) {
  constexpr std::size_t size = 8'000'000;
  const TemporaryFolder folder;
  const std::string report = folder.makeFifo("report");
  FloodChecker checker;
  const Tool tool = spawn({"flood-until-blocked", report, recordCount(size)},
                          [&](std::string_view bytes) { checker.check(bytes); });
  const std::size_t taken = std::stoul(readFifo(report));
  EXPECT_EQ(checker.received(), 0U);
  EXPECT_GE(taken, 4 * ChildProcesses::maxChunkSize);
  EXPECT_LE(taken, 8 * ChildProcesses::maxChunkSize);
  ASSERT_TRUE(runUntil([&] { return tool->exits > 0; }));
  EXPECT_TRUE(checker.isRight());
  EXPECT_EQ(checker.received(), size);
}

TEST_F(FloodsOfOutput, floodWaitsForTheReaderAfterTheChildsEnd) {
  // What the full queue does not take fits into the terminal, so the child can end.
  constexpr std::size_t size = 4 * ChildProcesses::maxChunkSize + 2'000;
  FloodChecker checker;
  const Tool tool =
      spawn({"flood", recordCount(size)}, [&](std::string_view bytes) { checker.check(bytes); });
  awaitEnd(tool->child.process->identifier());
  EXPECT_EQ(checker.received(), 0U);
  ASSERT_TRUE(runUntil([&] { return tool->exits > 0; }));
  EXPECT_TRUE(checker.isRight());
  EXPECT_EQ(checker.received(), size);
}

TEST_F(FloodsOfOutput, floodsOfTwoChildrenTakeTurns) {
  std::size_t first = 0;
  std::size_t second = 0;
  const Tool one = spawn({"flood-forever"}, [&](std::string_view bytes) { first += bytes.size(); });
  const Tool two =
      spawn({"flood-forever"}, [&](std::string_view bytes) { second += bytes.size(); });
  EXPECT_TRUE(runUntil([&] { return first > 5'000'000 && second > 5'000'000; }));
}

TEST_F(FloodsOfOutput, smallPiecesAreNotLost) {
  FloodChecker checker;
  Steps steps;
  FloodPattern pattern;
  for (int piece = 0; piece < 2000; ++piece) {
    steps.emplace_back("print");
    steps.push_back(pattern.next(1));
  }
  const Tool tool = spawn(steps, [&](std::string_view bytes) { checker.check(bytes); });
  ASSERT_TRUE(runUntil([&] { return tool->exits > 0; }));
  EXPECT_TRUE(checker.isRight());
  EXPECT_EQ(checker.received(), 2000 * FloodPattern::recordSize);
}

} // namespace
} // namespace driftmark::test
