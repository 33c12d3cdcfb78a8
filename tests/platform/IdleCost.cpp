// Waiting for silent children costs no wake-ups.

#include "ChildProcessesTest.h"
#include "harness/qt/EventLoop.h"

#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

namespace driftmark::test {
namespace {

class IdleCost : public ChildProcessesTest {
protected:
  /// How often the threads other than the main thread have gone to sleep so far.
  static long sleepsOfOtherThreads() {
    long sleeps = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task"))
      if (task.path().filename() != std::to_string(getpid()))
        sleeps += sleepsOf(task.path());
    return sleeps;
  }

private:
  static long sleepsOf(const std::filesystem::path& task) {
    std::ifstream status(task / "status");
    const std::string key = "voluntary_ctxt_switches:";
    for (std::string line; std::getline(status, line);)
      if (line.starts_with(key))
        return std::stol(line.substr(key.size()));
    return 0;
  }
};

TEST_F(IdleCost, waitingForChildrenDoesNotPoll) {
#if defined(DRIFTMARK_SANITIZED)
  GTEST_SKIP() << "sanitizers have threads of their own";
#endif
  const Tool one = spawn({"print", "ready", "wait"});
  const Tool two = spawn({"print", "ready", "close-output", "wait"});
  ASSERT_TRUE(runUntil([&] { return one->output == "ready" && two->output == "ready"; }));
  runFor(Seconds(0.05));
  const long before = sleepsOfOtherThreads();
  EXPECT_GT(before, 0);
  runFor(Seconds(0.3));
  // A thread may sleep once more than expected; one that polls sleeps many times.
  EXPECT_LT(sleepsOfOtherThreads() - before, 3);
}

} // namespace
} // namespace driftmark::test
