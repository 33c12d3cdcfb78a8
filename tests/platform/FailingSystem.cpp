// Launches in a process that has no descriptors left, or whose terminals fail.

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

/// Stands before the system's function of this name.
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
  /// A first child and a first run bring up all that lasts.
  void SetUp() override {
    EXPECT_EQ(outputOf({"print", "x"}), "x");
    EXPECT_EQ(run({"print", "x"}).output, "x");
  }

  LaunchError spawnWithRoomFor(std::size_t descriptors) {
    const DescriptorLimit limit(descriptors);
    return failedSpawn(childTool({"wait"}));
  }

  static std::variant<ToolResult, LaunchError> runWithRoomFor(std::size_t descriptors,
                                                              ToolRun& toolRun) {
    const DescriptorLimit limit(descriptors);
    return toolRun.run();
  }
};

TEST_F(FailingSystem, noDescriptorForATerminal) {
  const LaunchError error = spawnWithRoomFor(0);
  EXPECT_EQ(error.stage, Stage::allocateTerminal);
  EXPECT_EQ(error.description, "Too many open files");
}

TEST_F(FailingSystem, noDescriptorForTheOtherEndOfTheTerminal) {
  EXPECT_EQ(spawnWithRoomFor(1).stage, Stage::openTerminal);
}

TEST_F(FailingSystem, noDescriptorToWatchTheChild) {
  EXPECT_EQ(spawnWithRoomFor(2).stage, Stage::launch);
  EXPECT_FALSE(hasChildren());
}

TEST_F(FailingSystem, noDescriptorForARun) {
  for (std::size_t room = 0; room < 3; ++room) {
    const auto toolRun = children_->prepare(childTool({"wait"}), ToolOutput::capture);
    const auto result = runWithRoomFor(room, *toolRun);
    ASSERT_TRUE(std::holds_alternative<LaunchError>(result)) << room;
    EXPECT_EQ(std::get<LaunchError>(result).stage, Stage::launch);
    EXPECT_EQ(std::get<LaunchError>(result).description, "Too many open files");
  }
  EXPECT_FALSE(hasChildren());
}

TEST_F(FailingSystem, launchesWorkAgainOnceThereIsRoom) {
  const auto before = openDescriptors();
  for (std::size_t room = 0; room < 3; ++room)
    spawnWithRoomFor(room);
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
