// Children that come and go for a long time leave nothing behind.

#include "ChildProcessesTest.h"
#include "Descriptors.h"
#include "harness/qt/EventLoop.h"

#include <string>

namespace driftmark::test {
namespace {

class Restarts : public ChildProcessesTest {
protected:
  /// A child that prints and ends, its handle released at its exit as the program does it.
  void restartOnce() {
    const Tool tool = spawn({"print", "one line\n"});
    ASSERT_TRUE(runUntil([&] { return tool->exits > 0; }));
    ASSERT_EQ(tool->outputAtExit, "one line\r\n");
    tool->child.masterHandle.reset();
  }
};

TEST_F(Restarts, aThousandLeaveDescriptorsAndChildrenAsTheyWere) {
  restartOnce();
  const auto before = openDescriptors().size();
  for (int time = 0; time < 1000; ++time) {
    restartOnce();
    if (HasFailure())
      break;
  }
  // The thread that reads the terminals lets go of the last one in its own time.
  EXPECT_TRUE(pollUntil([&] { return openDescriptors().size() <= before; }));
  EXPECT_FALSE(hasChildren());
}

TEST_F(Restarts, aThousandRunsLeaveDescriptorsAndChildrenAsTheyWere) {
  const auto before = openDescriptors();
  for (int time = 0; time < 1000; ++time)
    ASSERT_EQ(run({"print", "x"}).output, "x");
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_FALSE(hasChildren());
}

TEST_F(Restarts, failedLaunchesLeaveDescriptorsAsTheyWere) {
  restartOnce();
  const auto before = openDescriptors();
  for (int time = 0; time < 100; ++time)
    EXPECT_EQ(failedSpawn({"/missing/tool", {}}).stage, LaunchError::Stage::launch);
  EXPECT_EQ(openDescriptors(), before);
}

} // namespace
} // namespace driftmark::test
