#include "SimulatedSystem.h"
#include "TestBundle.h"

#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <sysexits.h>

namespace icloud::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const std::string beginning = "b=$DRIFTMARK_SYSTEM_ROOT/usr/bin/brctl\n"
                              "$b monitor -i com.apple.CloudDocs >/dev/null 2>&1 & items=$!\n"
                              "$b monitor -g -i >/dev/null 2>&1 & global=$!\n"
                              "echo 'Watcher: stall' $DRIFTMARK_STALL_SECS >&2\n";
const std::string watching = "$b status >/dev/null; $b quota >/dev/null; wait\n";
const std::string goodWatcher =
    beginning + "trap 'kill $items $global; wait; exit 0' TERM\n" + watching;

const std::string shortStory = "title \"Short\"\n"
                               "stall-after 2s\n"
                               "file \"a\" 4KB\n"
                               "at 100ms upload \"a\" over 100ms\n"
                               "at 300ms end\n";
const std::string expectations = "expect 1 \"Watcher: stall 2.0*\"\n";

class DemoTest : public testing::Test {
protected:
  DemoTest() { std::filesystem::create_directory(worlds()); }

  std::filesystem::path worlds() const { return folder_.path() / "worlds"; }

  Launch demo(const std::string& watcher, const std::string& scenario,
              std::vector<std::string> more = {}) const {
    std::vector<std::string> arguments{"--program",  folder_.writeScript("watcher", watcher),
                                       "--scenario", folder_.write("test.scenario", scenario),
                                       "--out",      folder_.path() / "out"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return {ICLOUD_DEMO, arguments, {{"TMPDIR", worlds()}}};
  }

  void expectNothingLeft() const { EXPECT_TRUE(std::filesystem::is_empty(worlds())); }

  TemporaryFolder folder_;
};

TEST_F(DemoTest, AStoryThatGoesAsItShouldEndsWithStatus0) {
  const Finished demo = runToEnd(this->demo(goodWatcher, shortStory + expectations));
  EXPECT_EQ(demo.exitStatus, 0) << demo.output;
  EXPECT_THAT(demo.error, IsEmpty());
  EXPECT_THAT(demo.output, HasSubstr(" s  ☁ upload \"a\" over 100ms\n"));
  EXPECT_THAT(demo.output, HasSubstr(" s    Watcher: stall 2.0"));
  EXPECT_THAT(demo.output, HasSubstr("no deviation from the scenario"));
  EXPECT_THAT(contentsOf(folder_.path() / "out/log.txt"), testing::StartsWith("Watcher: stall"));
  EXPECT_THAT(contentsOf(folder_.path() / "out/story.txt"), HasSubstr("☁ the story ends\n"));
  EXPECT_THAT(contentsOf(folder_.path() / "out/summary.txt"), HasSubstr("no deviation"));
  expectNothingLeft();
}

TEST_F(DemoTest, AnExpectationThatIsMissedEndsWithStatus1) {
  const Finished demo =
      runToEnd(this->demo(goodWatcher, shortStory + expectations + "expect 1 \"uploading a\"\n"));
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output, HasSubstr("wanted 1, seen 0: uploading a\n"));
  expectNothingLeft();
}

TEST_F(DemoTest, ALineThatIsNotExpectedIsADeviation) {
  const Finished demo =
      runToEnd(this->demo("echo surprise\n" + goodWatcher, shortStory + expectations));
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output, HasSubstr("unexpected log line: surprise\n"));
}

TEST_F(DemoTest, AStepThatCannotBeDoneIsADeviation) {
  const Finished demo =
      runToEnd(this->demo(goodWatcher, "stall-after 2s\nfile \"a\" 4KB remote\nat 0s evict \"a\"\n"
                                       "at 100ms end\n" +
                                           expectations));
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output, HasSubstr("a step could not be done: "));
}

TEST_F(DemoTest, AProgramThatEndsBadlyIsADeviation) {
  const std::string watcher =
      beginning + "trap 'kill $items $global; wait; exit 3' TERM\n" + watching;
  const Finished demo = runToEnd(this->demo(watcher, shortStory + expectations));
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output, HasSubstr("the program ended with status 3\n"));
}

TEST_F(DemoTest, AProgramThatEndsTooEarlyIsADeviation) {
  const Finished demo = runToEnd(this->demo("exit 0\n", shortStory));
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output, HasSubstr("ended before the story did, with status 0\n"));
  expectNothingLeft();
}

TEST_F(DemoTest, AChildThatTheProgramLeavesRunningIsADeviation) {
  const std::string watcher = beginning + "trap 'kill $items; exit 0' TERM\n" + watching;
  const Finished demo = runToEnd(this->demo(watcher, shortStory + expectations));
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output, HasSubstr("left running: brctl\n"));
  expectNothingLeft();
}

TEST_F(DemoTest, AStoryThatIsNeverWatchedIsGivenUp) {
  const std::string watcher = beginning + "trap 'kill $items $global; wait; exit 0' TERM\nwait\n";
  const Finished demo = runToEnd(this->demo(watcher, shortStory, {"--limit", "1"}));
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output, HasSubstr("the story was not over after 1 s\n"));
  expectNothingLeft();
}

TEST_F(DemoTest, AProgramInABundleIsRunFromApplications) {
  const auto bundle = folder_.path() / "Greeter.app";
  makeBundle(bundle, beginning + "echo \"Place: ${0#\"$DRIFTMARK_SYSTEM_ROOT\"}\"\n" +
                         "$DRIFTMARK_SYSTEM_ROOT/usr/bin/codesign --verify --strict "
                         "/Applications/Greeter.app && echo Sealed\n"
                         "trap 'kill $items $global; wait; exit 0' TERM\n" +
                         watching);
  Launch launch =
      demo("", shortStory + expectations +
                   "expect 1 \"Place: /Applications/Greeter.app/Contents/MacOS/Greeter\"\n"
                   "expect 1 \"Sealed\"\n");
  launch.arguments[1] = bundle / "Contents/MacOS/Greeter";
  const Finished demo = runToEnd(launch);
  EXPECT_EQ(demo.exitStatus, 0) << demo.output << demo.error;
  expectNothingLeft();
}

TEST_F(DemoTest, AProgramInABundleThatCannotBeSignedIsAnError) {
  const auto bundle = folder_.path() / "Greeter.app";
  makeBundle(bundle, goodWatcher);
  writeFile(bundle / "beside the contents", "");
  Launch launch = demo("", shortStory);
  launch.arguments[1] = bundle / "Contents/MacOS/Greeter";
  const Finished demo = runToEnd(launch);
  EXPECT_EQ(demo.exitStatus, EX_OSERR);
  EXPECT_THAT(demo.error, HasSubstr("icloud-demo: cannot sign "));
  expectNothingLeft();
}

TEST_F(DemoTest, AnInterruptionTakesEverythingAway) {
  Channel output = Channel::pipe();
  Launch launch = demo(goodWatcher, "at 60s end\n");
  launch.output = launch.error = output.childEnd();
  ChildProcess process(launch);
  output.readUntil("the story begins");
  process.signal(SIGINT);
  EXPECT_THAT(output.readToEnd(), HasSubstr("Interrupted"));
  const int status = process.wait();
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 128 + SIGINT);
  expectNothingLeft();
}

TEST_F(DemoTest, WhoPlaysIsNotComparedWithTheScenario) {
  const Finished demo = runToEnd(
      this->demo(goodWatcher, shortStory + "user opens menu\nexpect 9 \"a\"\n", {"--interactive"}));
  EXPECT_EQ(demo.exitStatus, 0) << demo.output;
  EXPECT_THAT(demo.output, HasSubstr("The user is you: watcher is at the top right"));
  EXPECT_THAT(demo.output, HasSubstr("the story was told to its end\n"));
  EXPECT_THAT(demo.output, Not(HasSubstr("log line")));
}

TEST_F(DemoTest, WhoPlaysMayQuitWheneverTheyLike) {
  const Finished demo = runToEnd(this->demo("exit 0\n", shortStory, {"--interactive"}));
  EXPECT_EQ(demo.exitStatus, 0) << demo.output;
  EXPECT_THAT(demo.output, HasSubstr("You have quit it before the story was over."));
  EXPECT_THAT(demo.output, Not(HasSubstr("told to its end")));
  expectNothingLeft();
}

TEST_F(DemoTest, WhatThePersonHasNotDoneIsADeviation) {
  const Finished demo = runToEnd(this->demo("exit 0\n", shortStory + "user opens menu\n"));
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output, HasSubstr("line 6 of the scenario, user opens menu"));
  expectNothingLeft();
}

TEST_F(DemoTest, TellsWhatTheDesktopIsAskedToOpen) {
  const std::string asks = "$DRIFTMARK_SYSTEM_ROOT/usr/bin/xdg-open '/a place'\n";
  const Finished demo = runToEnd(this->demo(asks + goodWatcher, shortStory + expectations));
  EXPECT_EQ(demo.exitStatus, 0) << demo.output;
  EXPECT_THAT(demo.output, HasSubstr("☞ xdg-open /a place\n"));
}

TEST_F(DemoTest, AProgramThatCannotBeRunIsAnError) {
  Launch launch = demo(goodWatcher, shortStory);
  launch.arguments[1] = folder_.path() / "no such program";
  const Finished demo = runToEnd(launch);
  EXPECT_EQ(demo.exitStatus, EX_OSERR);
  EXPECT_THAT(demo.error, HasSubstr("icloud-demo: cannot run "));
  expectNothingLeft();
}

TEST_F(DemoTest, AScenarioThatCannotBeReadIsAnError) {
  const Finished demo = runToEnd(this->demo(goodWatcher, "at 1s dance\n"));
  EXPECT_EQ(demo.exitStatus, EX_DATAERR);
  EXPECT_THAT(demo.error, HasSubstr("test.scenario:1: unknown verb \"dance\"\n"));
  expectNothingLeft();
}

TEST_F(DemoTest, AnswersACommandLineThatMakesNoSense) {
  const std::vector<std::vector<std::string>> commands{
      {}, {"--program"}, {"--limit", "soon"}, {"--dance"}};
  for (const auto& command : commands) {
    const Finished demo = runToEnd({ICLOUD_DEMO, command, {}});
    EXPECT_EQ(demo.exitStatus, EX_USAGE);
    EXPECT_THAT(demo.error, HasSubstr("usage: icloud-demo"));
  }
}

#ifdef DRIFTMARK
class DemoUserTest : public DemoTest {
protected:
  Finished play(const std::string& steps, std::vector<std::string> more = {},
                const std::string& stage = "") const {
    Launch launch = demo("", stage + "at 300ms end\nallow \"*\"\n" + steps, std::move(more));
    launch.arguments[1] = DRIFTMARK;
    return runToEnd(launch);
  }
};

TEST_F(DemoUserTest, SeesAndUsesTheProgram) {
  const Finished demo = play("user awaits \"Driftmark: quota remaining *\"\n"
                             "user reads strip\n"
                             "user opens menu\n"
                             "user reads menu\n"
                             "user finds \"Launch at Login\" unchecked\n"
                             "user shot \"menu\"\n"
                             "user closes menu\n"
                             "user shot \"no menu\"\n"
                             "user awaits \"the story ends\"\n"
                             "user opens menu\n"
                             "user chooses \"Quit *\"\n"
                             "user awaits exit\n");
  EXPECT_EQ(demo.exitStatus, 0) << demo.output;
  EXPECT_THAT(demo.output, HasSubstr(" s  ☞ the menu bar says: iCloud Drive: idle\n"));
  EXPECT_THAT(contentsOf(folder_.path() / "out/menus.txt"), HasSubstr("\n  Launch at Login\n"));
  EXPECT_THAT(contentsOf(folder_.path() / "out/01-menu.png"), HasSubstr("PNG"));
  EXPECT_THAT(contentsOf(folder_.path() / "out/02-no menu.png"), HasSubstr("PNG"));
  expectNothingLeft();
}

TEST_F(DemoUserTest, FreesUpSpaceAndTakesItAgain) {
  const Finished demo = play("user awaits \"the story ends\"\n"
                             "user measures \"Photos\" at-least 120KB\n"
                             "user opens menu\n"
                             "user chooses \"Free Up Space…\"\n"
                             "user picks \"Photos\"\n"
                             "user sees \"2 files using *\"\n"
                             "user presses \"Remove Downloads\"\n"
                             "user sees \"iCloud is removing 2 downloads *\"\n"
                             "user presses \"OK\"\n"
                             "user measures \"Photos\" at-most 0\n"
                             "user opens \"Photos/b.heic\"\n"
                             "user awaits \"Driftmark: synced b.heic (download)\"\n"
                             "user measures \"Photos/a.heic\" at-most 0\n"
                             "user measures \"Photos/b.heic\" at-least 60KB\n",
                             {}, "file \"Photos/a.heic\" 60KB\nfile \"Photos/b.heic\" 60KB\n");
  EXPECT_EQ(demo.exitStatus, 0) << demo.output;
  EXPECT_THAT(demo.output, HasSubstr("☞ \"Photos\" takes up 0 bytes on this disk\n"));
  expectNothingLeft();
}

TEST_F(DemoUserTest, AStepThatCannotBeDoneIsADeviation) {
  const std::vector<std::pair<std::string, std::string>> steps{
      {"user chooses \"Quit *\"", "no menu is open"},
      {"user closes menu", "no menu is open"},
      {"user opens menu\nperson chooses \"Dance\"", "the menu has no such entry"},
      {"user opens menu\nperson finds \"Launch at Login\" checked", "is not checked"},
      {"user presses \"Dance\"", "no button"},
      {"user measures \"Dances\"", "cannot measure "},
      {"user measures \".\" at-least 1KB", "that is too little"},
      {"user opens \"Dances\"", "the file cannot be opened: brctl ended with status 1"}};
  for (const auto& [step, problem] : steps) {
    const Finished demo = play(step + "\nperson shot \"never\"\n");
    EXPECT_EQ(demo.exitStatus, 1) << step;
    EXPECT_THAT(demo.output, HasSubstr(problem));
    EXPECT_THAT(demo.output, HasSubstr("FAIL  the user at the screen could do every step\n"));
    EXPECT_FALSE(std::filesystem::exists(folder_.path() / "out/01-never.png"));
    expectNothingLeft();
  }
}

TEST_F(DemoUserTest, WaitingInVainIsADeviation) {
  const Finished demo = play("user awaits \"snow\"\n", {"--limit", "3"});
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output,
              HasSubstr("waited in vain: line 3 of the scenario, user awaits \"snow\"\n"));
  expectNothingLeft();
}
#endif

} // namespace
} // namespace icloud::test
