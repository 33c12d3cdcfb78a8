// While every delay lasts eight seconds longer, the icon still shows what a real child prints, at
// once.

#include "support/LateTimers.h"

#include "harness/BuiltFiles.h"
#include "harness/TemporaryFolder.h"
#include "harness/qt/EventLoop.h"
#include "platform/linux/runloop/LinuxMainQueue.h"
#include "platform/posix/FileDescriptor.h"
#include "platform/posix/children/PosixChildProcesses.h"
#include "support/TestPlatform.h"
#include "ui/StatusItemController.h"

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr Seconds lateness{8};

class LateTimersTest : public testing::Test {
protected:
  /// What the item monitor printed, and what the status item shows then.
  struct Chunk {
    std::string_view lines;
    std::string_view symbol;
    std::string_view title;
  };

  /// The item monitor prints what the pipe receives, the global one nothing.
  LateTimersTest() {
    platform_.fileSystem.pretendEverythingExists();
    root_.writeScript("usr/bin/brctl", "case \"$*\" in *CloudDocs) exec cat '" + pipePath_ +
                                           "';; *) " + execChildTool("wait") + ";; esac");
    controller_ = StatusItemController::make(platform_.platform(queue_, children_));
  }

  /// Lets the item monitor print a chunk. Returns the seconds until it is shown.
  double secondsUntilShown(const Chunk& chunk) {
    const auto start = SteadyClock::now();
    EXPECT_EQ(write(pipe_.number(), chunk.lines.data(), chunk.lines.size()),
              static_cast<ssize_t>(chunk.lines.size()));
    const TestStatusBar& shown = platform_.statusBar;
    EXPECT_TRUE(runUntil([&] {
      return shown.symbol().name == chunk.symbol && shown.title() == chunk.title;
    })) << chunk.lines;
    return Seconds(SteadyClock::now() - start).count();
  }

  TestPlatform platform_;
  TemporaryFolder root_;
  const std::string pipePath_ = root_.makeFifo("lines");
  const FileDescriptor pipe_{open(pipePath_.c_str(), O_RDWR | O_CLOEXEC)};
  LinuxMainQueue onTime_;
  LateTimers queue_{onTime_, lateness};
  PosixChildProcesses children_{queue_, root_.path().string()};
  std::shared_ptr<StatusItemController> controller_;
};

TEST_F(LateTimersTest, eachChunkIsShownInOrderAndAtItsTime) {
  const std::vector<Chunk> chunks{
      {" o /a ↑ 10%\n", "icloud.and.arrow.up", "10%"},
      {" o /a ↑ 80%\n", "icloud.and.arrow.up", "80%"},
      {" o /b ☁ ↓ 20%\n", "arrow.triangle.2.circlepath.icloud", "50%"},
      {" o /a ☁\n", "icloud.and.arrow.down", "20%"},
      {" o /b ☁ ↓ 90%\n", "icloud.and.arrow.down", "90%"},
      {" o /b ☁\n", "icloud.and.arrow.down", ""},
      {" o /c ☁ Upload Error 28\n", "exclamationmark.icloud", ""},
      {" o /c ↑ 5%\n", "icloud.and.arrow.up", "5%"},
  };
  for (const Chunk& chunk : chunks)
    EXPECT_LT(secondsUntilShown(chunk), lateness.count() / 2) << chunk.lines;
  std::vector<std::string> states;
  for (const std::string& line : platform_.systemLog.lines())
    if (line.starts_with("Driftmark: state -> "))
      states.push_back(line.substr(20));
  EXPECT_THAT(states, testing::ElementsAre("idle", "uploading", "both", "downloading", "attention",
                                           "uploading"));
}

} // namespace
} // namespace driftmark::test
