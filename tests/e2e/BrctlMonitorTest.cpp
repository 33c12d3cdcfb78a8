#include "SimulatedSystem.h"
#include "process/Pipe.h"

#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <sysexits.h>

namespace icloud::test {
namespace {

using testing::HasSubstr;
using testing::Not;

const std::vector<std::string> itemMonitor{"monitor", "-i", "com.apple.CloudDocs"};
const std::vector<std::string> globalMonitor{"monitor", "-g", "-i"};
const std::string prefix = "/com~apple~CloudDocs/";

const std::string everyState = "folder \"Empty\"\n"
                               "file \"here.txt\" 4KB\n"
                               "file \"there ☃.txt\" 4KB remote\n"
                               "file \"broken.txt\" 4KB\n"
                               "error \"broken.txt\" \"Upload Error 28\"\n"
                               "at 60s end\n";

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size())
    ++count;
  return count;
}

TEST(BrctlMonitor, itemsAreColouredOnTerminal) {
  SimulatedSystem system;
  system.play(everyState);
  Tool monitor = system.brctl(itemMonitor, Channel::terminal());
  const std::string text = monitor.output().readUntil("watching for changes");

  EXPECT_THAT(text, HasSubstr("\x1b[1m o \x1b[0m" + prefix + "Empty\r\n"));
  EXPECT_THAT(text, HasSubstr("\x1b[1m o \x1b[0m" + prefix + "here.txt ☁\r\n"));
  EXPECT_THAT(text, HasSubstr("\x1b[1m o \x1b[0m" + prefix +
                              "there ☃.txt ☁ \x1b[2mnot downloaded\x1b[0m\r\n"));
  EXPECT_THAT(text, HasSubstr("\x1b[1m o \x1b[0m" + prefix +
                              "broken.txt ☁ \x1b[1;31mUpload Error 28\x1b[0m\r\n"));
}

TEST(BrctlMonitor, itemsArePlainOnPipe) {
  SimulatedSystem system;
  system.play(everyState);
  Tool monitor = system.brctl(itemMonitor, Channel::pipe());
  system.bird().output().readUntil(" begin ");
  system.bird().process().end(std::chrono::seconds(10));
  const std::string text = monitor.output().readToEnd();

  EXPECT_THAT(text, HasSubstr("\n o " + prefix + "Empty\n"));
  EXPECT_THAT(text, HasSubstr("\n o " + prefix + "here.txt ☁\n"));
  EXPECT_THAT(text, HasSubstr("\n o " + prefix + "there ☃.txt ☁ not downloaded\n"));
  EXPECT_THAT(text, HasSubstr("\n o " + prefix + "broken.txt ☁ Upload Error 28\n"));
  EXPECT_THAT(text, Not(HasSubstr("\x1b")));
  EXPECT_THAT(text, Not(HasSubstr("\r")));
}

TEST(BrctlMonitor, transfersAreShownWithAndWithoutPercentages) {
  SimulatedSystem system;
  system.play("file \"up.txt\" 4KB\n"
              "file \"down.mov\" 800KB remote\n"
              "file \"still.mov\" 800KB remote\n"
              "at 0s upload \"up.txt\" over 400ms every 90ms\n"
              "at 0s upload \"quiet.txt\" 4KB over 400ms without percentages\n"
              "at 0s download \"down.mov\" over 400ms every 50ms\n"
              "at 0s download \"still.mov\" over 400ms without percentages\n"
              "at 600ms print items \"that was all\\n\"\n"
              "at 600ms end\n");
  Tool monitor = system.brctl(itemMonitor, Channel::terminal());
  const std::string text = monitor.output().readUntil("that was all");
  const std::string mark = "\r\x1b[1m o \x1b[0m" + prefix;

  EXPECT_THAT(text, HasSubstr(mark + "up.txt \x1b[38;5;33m↑ 45%\x1b[0m\r\n"));
  EXPECT_THAT(text, HasSubstr(mark + "quiet.txt ☁ \x1b[38;5;33m↑\x1b[0m\r\n"));
  EXPECT_THAT(text, HasSubstr(mark + "down.mov ☁ \x1b[32m↓ 12.5%\x1b[0m\r\n"));
  EXPECT_THAT(text, HasSubstr(mark + "still.mov ☁ \x1b[32m↓\x1b[0m\r\n"));
  for (const char* name : {"up.txt", "quiet.txt", "down.mov", "still.mov"})
    EXPECT_THAT(text, HasSubstr("\x1b[1m o \x1b[0m" + prefix + name + " ☁\r\n"));
}

TEST(BrctlMonitor, globalTransfersAreShownAsProgressObjects) {
  SimulatedSystem system;
  system.play("at 0s global 4096 over 400ms every 100ms\n"
              "at 500ms print global \"that was all\\n\"\n"
              "at 500ms end\n",
              "global");
  Tool monitor = system.brctl(globalMonitor, Channel::terminal());
  const std::string text = monitor.output().readUntil("that was all");

  EXPECT_THAT(text, HasSubstr("> : Parent: 0x0 (portion: 0) / Fraction completed: "
                              "\x1b[1m0.2500\x1b[0m / Completed: 1024 of 4096  \r\n"));
  EXPECT_THAT(text, HasSubstr("Fraction completed: \x1b[1m1.0000\x1b[0m / "
                              "Completed: 4096 of 4096  \r\n"));
  EXPECT_EQ(countOf(text, "<NSProgress: 0x"), 5u);
}

TEST(BrctlMonitor, lateGlobalMonitorShowsRunningTransfers) {
  SimulatedSystem system;
  system.play("at 0s global 4096 over 60s every 30s\nat 60s end\n", "quota");
  system.runBrctl({"quota"});
  system.bird().output().readUntil(" event ");
  Tool monitor = system.brctl(globalMonitor, Channel::terminal());
  EXPECT_THAT(monitor.output().readUntil("of 4096"), HasSubstr("Completed: 0 of 4096"));
}

TEST(BrctlMonitor, printedBytesAreUnchanged) {
  SimulatedSystem system;
  system.play("at 0s print items \"\\xff\\x00half a line\"\nat 1s end\n");
  Tool monitor = system.brctl(itemMonitor, Channel::terminal());
  const std::string text = monitor.output().readUntil("half a line");
  EXPECT_THAT(text, HasSubstr(std::string("\xff\0half", 6)));
}

TEST(BrctlMonitor, captureIsReplayed) {
  const TemporaryFolder folder;
  const auto capture = folder.write("capture.txt", " o /com~apple~CloudDocs/old ↑ 5%\nthe end\n");
  SimulatedSystem system;
  system.play("at 0s replay items \"" + capture.string() + "\"\nat 1s end\n");
  Tool monitor = system.brctl(itemMonitor, Channel::terminal());
  EXPECT_THAT(monitor.output().readUntil("the end"),
              HasSubstr(" o /com~apple~CloudDocs/old ↑ 5%\r\n"));
}

TEST(BrctlMonitor, closedTerminalEndsMonitor) {
  SimulatedSystem system;
  system.play("at 60s end\n");
  Tool monitor = system.brctl(itemMonitor, Channel::terminal());
  monitor.output().readUntil("watching for changes");
  monitor.output().closeReadingEnd();
  const int status = monitor.process().wait();
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), EX_IOERR);
}

TEST(BrctlMonitor, closedPipeEndsMonitor) {
  SimulatedSystem system;
  system.play("at 60s end\n");
  Tool monitor = system.brctl(itemMonitor, Channel::pipe());
  system.bird().output().readUntil(" begin ");
  monitor.output().closeReadingEnd();
  const int status = monitor.process().wait();
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), EX_IOERR);
}

TEST(BrctlMonitor, lostConnectionEndsMonitorWithMessage) {
  for (const auto& arguments : {itemMonitor, globalMonitor}) {
    SimulatedSystem system;
    system.play("at 60s end\n", "items,global");
    Tool monitor = system.brctl(arguments, Channel::terminal());
    monitor.output().readUntil("observing");
    system.bird().process().end(std::chrono::seconds(10));
    EXPECT_THAT(monitor.output().readToEnd(),
                HasSubstr("brctl: the connection to bird was lost\r\n"));
    const int status = monitor.process().wait();
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), EX_UNAVAILABLE);
  }
}

TEST(BrctlMonitor, killStepKillsOnlyNamedMonitor) {
  SimulatedSystem system;
  system.play("at 0s kill item-monitor\nat 1s end\n", "items,global");
  Tool items = system.brctl(itemMonitor, Channel::terminal());
  Tool global = system.brctl(globalMonitor, Channel::terminal());
  const int status = items.process().wait();
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGKILL);
  system.bird().output().readUntil(" end\n");
  EXPECT_FALSE(isReadableWithin(global.process().exitDescriptor(), std::chrono::seconds(0)));
}

TEST(BrctlMonitor, slowReaderBlocksNobodyAndLosesNothing) {
  SimulatedSystem system;
  system.play("files 20000 \"Folder/A file with a name of some length {n}.txt\" 0B\n"
              "at 60s end\n");
  Tool slow = system.brctl(itemMonitor, Channel::terminal());
  system.bird().output().readUntil(" begin ");
  EXPECT_EQ(system.runBrctl({"quota"}).exitStatus, 0);

  const std::string text = slow.output().readUntil("watching for changes");
  EXPECT_EQ(countOf(text, "Folder/A file with"), 20000u);
  EXPECT_THAT(text, HasSubstr("gathered 20001 items"));
}

} // namespace
} // namespace icloud::test
