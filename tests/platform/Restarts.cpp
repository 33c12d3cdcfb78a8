// What a thousand children leave behind: nothing.

#include "ChildProcessesTest.h"
#include "Descriptors.h"
#include "harness/qt/EventLoop.h"

#include <string>

namespace driftmark::test {
namespace {

class Restarts : public ChildProcessesTest {
protected:
  /// Runs a child that prints and ends, and releases its handle at its exit, as the program does.
  void restartOnce() {
    const Tool tool = spawn({"print", "one line\n"});
    ASSERT_TRUE(runUntil([&] { return tool->exits > 0; }));
    ASSERT_EQ(tool->outputAtExit, "one line\r\n");
    tool->child.masterHandle.reset();
  }
};

TEST_F(Restarts, thousandChildrenLeaveNoDescriptorAndNoChild) {
  restartOnce();
  const auto before = openDescriptors().size();
  for (int time = 0; time < 1000; ++time) {
    restartOnce();
    if (HasFailure())
      break;
  }
  // The thread that reads the terminals releases the last one a little later.
  EXPECT_TRUE(pollUntil([&] { return openDescriptors().size() <= before; }));
  EXPECT_FALSE(hasChildren());
}

TEST_F(Restarts, thousandRunsLeaveNoDescriptorAndNoChild) {
  const auto before = openDescriptors();
  for (int time = 0; time < 1000; ++time)
    ASSERT_EQ(run({"print", "x"}).output, "x");
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_FALSE(hasChildren());
}

TEST_F(Restarts, failedLaunchesLeaveNoDescriptor) {
  restartOnce();
  const auto before = openDescriptors();
  for (int time = 0; time < 100; ++time)
    EXPECT_EQ(failedSpawn({"/missing/tool", {}}).stage, LaunchError::Stage::launch);
  EXPECT_EQ(openDescriptors(), before);
}

} // namespace
} // namespace driftmark::test
