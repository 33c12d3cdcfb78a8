// What a launch reports when descriptors run out or a terminal fails.

#include "ChildProcessesTest.h"
#include "Descriptors.h"
#include "harness/qt/EventLoop.h"
#include "platform/posix/children/TerminalChannel.h"

#include <cerrno>
#include <variant>

#include <dlfcn.h>
#include <fcntl.h>
#include <stdlib.h> // NOLINT(modernize-deprecated-headers): declares unlockpt
#include <sys/wait.h>
#include <unistd.h>

namespace {

bool unlockFails = false;

} // namespace

/// Replaces the system's function of this name, so that it can fail.
extern "C" int unlockpt(int fd) noexcept {
  using Function = int(int);
  static auto* const real = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, "unlockpt"));
  if (!unlockFails)
    return real(fd);
  errno = EINVAL;
  return -1;
}

namespace driftmark::test {
namespace {

using Stage = LaunchError::Stage;

class FailingSystem : public ChildProcessesTest {
protected:
  /// A first child and a first run open the descriptors that stay open.
  void SetUp() override {
    EXPECT_EQ(outputOf({"print", "x"}), "x");
    EXPECT_EQ(run({"print", "x"}).output, "x");
  }

  LaunchError spawnWithDescriptors(std::size_t descriptors) {
    const DescriptorLimit limit(descriptors);
    return failedSpawn(childTool({"wait"}));
  }

  static std::variant<ToolResult, LaunchError> runWithDescriptors(std::size_t descriptors,
                                                                  ToolRun& toolRun) {
    const DescriptorLimit limit(descriptors);
    return toolRun.run();
  }
};

TEST_F(FailingSystem, launchFailsWithoutDescriptorForTerminal) {
  const LaunchError error = spawnWithDescriptors(0);
  EXPECT_EQ(error.stage, Stage::allocateTerminal);
  EXPECT_EQ(error.description, "Too many open files");
}

TEST_F(FailingSystem, launchFailsWithoutDescriptorForOtherEndOfTerminal) {
  EXPECT_EQ(spawnWithDescriptors(1).stage, Stage::openTerminal);
}

TEST_F(FailingSystem, launchFailsWithoutDescriptorForExitAndLeavesNoChild) {
  EXPECT_EQ(spawnWithDescriptors(2).stage, Stage::launch);
  EXPECT_FALSE(hasChildren());
}

TEST_F(FailingSystem, runFailsWithoutDescriptors) {
  for (std::size_t count = 0; count < 3; ++count) {
    const auto toolRun = children_->prepare(childTool({"wait"}), ToolOutput::capture);
    const auto result = runWithDescriptors(count, *toolRun);
    ASSERT_TRUE(std::holds_alternative<LaunchError>(result)) << count;
    EXPECT_EQ(std::get<LaunchError>(result).stage, Stage::launch);
    EXPECT_EQ(std::get<LaunchError>(result).description, "Too many open files");
  }
  EXPECT_FALSE(hasChildren());
}

TEST_F(FailingSystem, launchesWorkAgainOnceDescriptorsAreFree) {
  const auto before = openDescriptors();
  for (std::size_t count = 0; count < 3; ++count)
    spawnWithDescriptors(count);
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(outputOf({"print", "again"}), "again");
}

TEST_F(FailingSystem, exhaustedDescriptorsDoNotDisturbARunningChild) {
  const Tool tool = spawn({"print", "ready ", "print-when-terminated", "goodbye"});
  ASSERT_TRUE(runUntil([&] { return tool->output == "ready "; }));
  const DescriptorLimit limit(0);
  tool->child.process->terminate();
  ASSERT_TRUE(runUntil([&] { return tool->exits > 0; }));
  EXPECT_EQ(tool->outputAtExit, "ready goodbye");
}

TEST_F(FailingSystem, masterThatCannotBeUnlockedStaysOpen) {
  const auto before = openDescriptors();
  unlockFails = true;
  const LaunchError error = failedSpawn(childTool({"wait"}));
  unlockFails = false;
  EXPECT_EQ(error.stage, Stage::allocateTerminal);
  EXPECT_EQ(error.description, "Invalid argument");
  auto left = openDescriptors();
  ASSERT_EQ(left.size(), before.size() + 1);
  for (const int number : before)
    left.erase(number);
  EXPECT_EQ(fcntl(*left.begin(), F_GETFD), FD_CLOEXEC);
  close(*left.begin());
}

TEST_F(FailingSystem, terminalNeverBecomesTheControllingOne) {
  const pid_t leader = fork();
  if (leader == 0) {
    setsid();
    const auto terminal = Terminal::open();
    const bool opened = std::holds_alternative<Terminal>(terminal);
    _exit(opened && open("/dev/tty", O_RDWR | O_CLOEXEC) < 0 && errno == ENXIO ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(leader, &status, 0), leader);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

} // namespace
} // namespace driftmark::test
