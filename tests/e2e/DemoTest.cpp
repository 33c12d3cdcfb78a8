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

const std::string startMonitors = "b=$DRIFTMARK_SYSTEM_ROOT/usr/bin/brctl\n"
                                  "$b monitor -i com.apple.CloudDocs >/dev/null 2>&1 & items=$!\n"
                                  "$b monitor -g -i >/dev/null 2>&1 & global=$!\n"
                                  "echo 'Watcher: stall' $DRIFTMARK_STALL_SECS >&2\n";
const std::string readReportsAndWait = "$b status >/dev/null; $b quota >/dev/null; wait\n";
const std::string goodWatcher =
    startMonitors + "trap 'kill $items $global; wait; exit 0' TERM\n" + readReportsAndWait;

const std::string shortScenario = "title \"Short\"\n"
                                  "stall-after 2s\n"
                                  "file \"a\" 4KB\n"
                                  "at 100ms upload \"a\" over 100ms\n"
                                  "at 300ms end\n";
const std::string expectations = "expect 1 \"Watcher: stall 2.0*\"\n";

class DemoTest : public testing::Test {
protected:
  DemoTest() { std::filesystem::create_directory(sandboxes()); }

  std::filesystem::path sandboxes() const { return folder_.path() / "sandboxes"; }

  Launch demoLaunch(const std::string& watcher, const std::string& scenario,
                    std::vector<std::string> options = {}) const {
    std::vector<std::string> arguments{"--program",  folder_.writeScript("watcher", watcher),
                                       "--scenario", folder_.write("test.scenario", scenario),
                                       "--out",      folder_.path() / "out"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return {demoProgram(), arguments, {{"TMPDIR", sandboxes()}}};
  }

  void expectNoSandboxLeft() const { EXPECT_TRUE(std::filesystem::is_empty(sandboxes())); }

  TemporaryFolder folder_;
};

TEST_F(DemoTest, expectedRunEndsWithStatus0) {
  const Finished demo = runToEnd(demoLaunch(goodWatcher, shortScenario + expectations));
  EXPECT_EQ(demo.exitStatus, 0) << demo.output;
  EXPECT_THAT(demo.error, IsEmpty());
  EXPECT_THAT(demo.output, HasSubstr(" s  ☁ upload \"a\" over 100ms\n"));
  EXPECT_THAT(demo.output, HasSubstr(" s    Watcher: stall 2.0"));
  EXPECT_THAT(demo.output, HasSubstr("no deviation from the scenario"));
  EXPECT_THAT(contentsOf(folder_.path() / "out/log.txt"), testing::StartsWith("Watcher: stall"));
  EXPECT_THAT(contentsOf(folder_.path() / "out/transcript.txt"),
              HasSubstr("☁ the scenario ends\n"));
  EXPECT_THAT(contentsOf(folder_.path() / "out/summary.txt"), HasSubstr("no deviation"));
  expectNoSandboxLeft();
}

TEST_F(DemoTest, unmetExpectationEndsWithStatus1) {
  const Finished demo = runToEnd(
      demoLaunch(goodWatcher, shortScenario + expectations + "expect 1 \"uploading a\"\n"));
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output, HasSubstr("expected 1, seen 0: uploading a\n"));
  expectNoSandboxLeft();
}

TEST_F(DemoTest, unexpectedLogLineIsADeviation) {
  const Finished demo =
      runToEnd(demoLaunch("echo surprise\n" + goodWatcher, shortScenario + expectations));
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output, HasSubstr("unexpected log line: surprise\n"));
}

TEST_F(DemoTest, failedScenarioStepIsADeviation) {
  const Finished demo =
      runToEnd(demoLaunch(goodWatcher, "stall-after 2s\nfile \"a\" 4KB remote\nat 0s evict \"a\"\n"
                                       "at 100ms end\n" +
                                           expectations));
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output, HasSubstr("a step could not be done: "));
}

TEST_F(DemoTest, exitStatusOtherThan0IsADeviation) {
  const std::string watcher =
      startMonitors + "trap 'kill $items $global; wait; exit 3' TERM\n" + readReportsAndWait;
  const Finished demo = runToEnd(demoLaunch(watcher, shortScenario + expectations));
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output, HasSubstr("the program ended with status 3\n"));
}

TEST_F(DemoTest, earlyExitIsADeviation) {
  const Finished demo = runToEnd(demoLaunch("exit 0\n", shortScenario));
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output, HasSubstr("ended before the scenario, with status 0\n"));
  expectNoSandboxLeft();
}

TEST_F(DemoTest, childLeftRunningIsADeviation) {
  const std::string watcher =
      startMonitors + "trap 'kill $items; exit 0' TERM\n" + readReportsAndWait;
  const Finished demo = runToEnd(demoLaunch(watcher, shortScenario + expectations));
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output, HasSubstr("left running: brctl\n"));
  expectNoSandboxLeft();
}

TEST_F(DemoTest, scenarioThatNeverBeginsTimesOut) {
  const std::string watcher =
      startMonitors + "trap 'kill $items $global; wait; exit 0' TERM\nwait\n";
  const Finished demo = runToEnd(demoLaunch(watcher, shortScenario, {"--timeout", "1"}));
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output, HasSubstr("the scenario had not ended 1 s after its time\n"));
  expectNoSandboxLeft();
}

TEST_F(DemoTest, scenarioMayTakeLongerThanTimeout) {
  const std::string scenario = "title \"Slow\"\nstall-after 2s\nat 2500ms end\n";
  const Finished demo =
      runToEnd(demoLaunch(goodWatcher, scenario + expectations, {"--timeout", "2"}));
  EXPECT_EQ(demo.exitStatus, 0) << demo.output;
}

TEST_F(DemoTest, interactiveRunNamesCommandsThatChangeDrive) {
  const Finished demo = runToEnd(demoLaunch(goodWatcher, shortScenario, {"--interactive"}));
  EXPECT_EQ(demo.exitStatus, 0) << demo.output;
  EXPECT_THAT(demo.output, HasSubstr("/com~apple~CloudDocs\"\n  brctl=" + sandboxes().string()));
}

TEST_F(DemoTest, programInBundleRunsFromApplications) {
  const auto bundle = folder_.path() / "Greeter.app";
  makeBundle(bundle, startMonitors + "echo \"Run from: ${0#\"$DRIFTMARK_SYSTEM_ROOT\"}\"\n" +
                         "$DRIFTMARK_SYSTEM_ROOT/usr/bin/codesign --verify --strict "
                         "/Applications/Greeter.app && echo Signed\n"
                         "trap 'kill $items $global; wait; exit 0' TERM\n" +
                         readReportsAndWait);
  Launch launch =
      demoLaunch("", shortScenario + expectations +
                         "expect 1 \"Run from: /Applications/Greeter.app/Contents/MacOS/Greeter\"\n"
                         "expect 1 \"Signed\"\n");
  launch.arguments[1] = bundle / "Contents/MacOS/Greeter";
  const Finished demo = runToEnd(launch);
  EXPECT_EQ(demo.exitStatus, 0) << demo.output << demo.error;
  expectNoSandboxLeft();
}

TEST_F(DemoTest, unsignableBundleIsAnError) {
  const auto bundle = folder_.path() / "Greeter.app";
  makeBundle(bundle, goodWatcher);
  writeFile(bundle / "beside the contents", "");
  Launch launch = demoLaunch("", shortScenario);
  launch.arguments[1] = bundle / "Contents/MacOS/Greeter";
  const Finished demo = runToEnd(launch);
  EXPECT_EQ(demo.exitStatus, EX_OSERR);
  EXPECT_THAT(demo.error, HasSubstr("icloud-demo: cannot sign "));
  expectNoSandboxLeft();
}

TEST_F(DemoTest, interruptionRemovesEverything) {
  Channel output = Channel::pipe();
  Launch launch = demoLaunch(goodWatcher, "at 60s end\n");
  launch.output = launch.error = output.childEnd();
  ChildProcess process(launch);
  output.readUntil("the scenario begins");
  process.signal(SIGINT);
  EXPECT_THAT(output.readToEnd(), HasSubstr("Interrupted"));
  const int status = process.wait();
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 128 + SIGINT);
  expectNoSandboxLeft();
}

TEST_F(DemoTest, interactiveLogIsNotCompared) {
  const Finished demo = runToEnd(demoLaunch(
      goodWatcher, shortScenario + "user opens menu\nexpect 9 \"a\"\n", {"--interactive"}));
  EXPECT_EQ(demo.exitStatus, 0) << demo.output;
  EXPECT_THAT(demo.output, HasSubstr("The user is you: watcher is at the top right"));
  EXPECT_THAT(demo.output, HasSubstr("the scenario ran to its end\n"));
  EXPECT_THAT(demo.output, Not(HasSubstr("log line")));
}

TEST_F(DemoTest, interactiveUserMayQuitAnyTime) {
  const Finished demo = runToEnd(demoLaunch("exit 0\n", shortScenario, {"--interactive"}));
  EXPECT_EQ(demo.exitStatus, 0) << demo.output;
  EXPECT_THAT(demo.output, HasSubstr("You quit it before the scenario ended."));
  EXPECT_THAT(demo.output, Not(HasSubstr("ran to its end")));
  expectNoSandboxLeft();
}

TEST_F(DemoTest, unfinishedUserStepIsADeviation) {
  const Finished demo = runToEnd(demoLaunch("exit 0\n", shortScenario + "user opens menu\n"));
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output, HasSubstr("line 6 of the scenario, user opens menu"));
  expectNoSandboxLeft();
}

TEST_F(DemoTest, filesOpenedOnTheDesktopArePrinted) {
  const std::string opens = "$DRIFTMARK_SYSTEM_ROOT/usr/bin/xdg-open '/a place'\n";
  const Finished demo = runToEnd(demoLaunch(opens + goodWatcher, shortScenario + expectations));
  EXPECT_EQ(demo.exitStatus, 0) << demo.output;
  EXPECT_THAT(demo.output, HasSubstr("☞ xdg-open /a place\n"));
}

TEST_F(DemoTest, missingProgramIsAnError) {
  Launch launch = demoLaunch(goodWatcher, shortScenario);
  launch.arguments[1] = folder_.path() / "no such program";
  const Finished demo = runToEnd(launch);
  EXPECT_EQ(demo.exitStatus, EX_OSERR);
  EXPECT_THAT(demo.error, HasSubstr("icloud-demo: cannot run "));
  expectNoSandboxLeft();
}

TEST_F(DemoTest, invalidScenarioIsAnError) {
  const Finished demo = runToEnd(demoLaunch(goodWatcher, "at 1s dance\n"));
  EXPECT_EQ(demo.exitStatus, EX_DATAERR);
  EXPECT_THAT(demo.error, HasSubstr("test.scenario:1: unknown verb \"dance\"\n"));
  expectNoSandboxLeft();
}

TEST_F(DemoTest, invalidCommandLineShowsUsage) {
  const std::vector<std::vector<std::string>> commands{
      {}, {"--program"}, {"--timeout", "soon"}, {"--dance"}};
  for (const auto& command : commands) {
    const Finished demo = runToEnd({demoProgram(), command, {}});
    EXPECT_EQ(demo.exitStatus, EX_USAGE);
    EXPECT_THAT(demo.error, HasSubstr("usage: icloud-demo"));
  }
}

class DemoUserTest : public DemoTest {
protected:
  Finished play(const std::string& steps, std::vector<std::string> options = {},
                const std::string& initialState = "") const {
    Launch launch =
        demoLaunch("", initialState + "at 300ms end\nallow \"*\"\n" + steps, std::move(options));
    launch.arguments[1] = driftmarkProgram();
    return runToEnd(launch);
  }
};

TEST_F(DemoUserTest, userSeesAndUsesTheProgram) {
  const Finished demo = play("user awaits \"Driftmark: quota remaining *\"\n"
                             "user reads strip\n"
                             "user opens menu\n"
                             "user reads menu\n"
                             "user finds \"Launch at Login\" unchecked\n"
                             "user shot \"menu\"\n"
                             "user closes menu\n"
                             "user shot \"no menu\"\n"
                             "user awaits \"the scenario ends\"\n"
                             "user opens menu\n"
                             "user chooses \"Quit *\"\n"
                             "user awaits exit\n");
  EXPECT_EQ(demo.exitStatus, 0) << demo.output;
  EXPECT_THAT(demo.output, HasSubstr(" s  ☞ the menu bar says: iCloud Drive: idle\n"));
  EXPECT_THAT(contentsOf(folder_.path() / "out/menus.txt"), HasSubstr("\n  Launch at Login\n"));
  EXPECT_THAT(contentsOf(folder_.path() / "out/01-menu.png"), HasSubstr("PNG"));
  EXPECT_THAT(contentsOf(folder_.path() / "out/02-no menu.png"), HasSubstr("PNG"));
  expectNoSandboxLeft();
}

TEST_F(DemoUserTest, userFreesUpSpaceAndDownloadsAgain) {
  const Finished demo = play("user awaits \"the scenario ends\"\n"
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
  expectNoSandboxLeft();
}

TEST_F(DemoUserTest, failedUserStepIsADeviation) {
  const std::vector<std::pair<std::string, std::string>> steps{
      {"user chooses \"Quit *\"", "no menu is open"},
      {"user closes menu", "no menu is open"},
      {"user opens menu\nuser chooses \"Dance\"", "the menu has no such entry"},
      {"user opens menu\nuser finds \"Launch at Login\" checked", "is not checked"},
      {"user presses \"Dance\"", "no button"},
      {"user measures \"Dances\"", "cannot measure "},
      {"user measures \".\" at-least 1KB", "that is too little"},
      {"user opens \"Dances\"", "the file cannot be opened: brctl ended with status 1"}};
  for (const auto& [step, problem] : steps) {
    const Finished demo = play(step + "\nuser shot \"never\"\n");
    EXPECT_EQ(demo.exitStatus, 1) << step;
    EXPECT_THAT(demo.output, HasSubstr(problem));
    EXPECT_THAT(demo.output, HasSubstr("FAIL  the scenario's user completed every step\n"));
    EXPECT_FALSE(std::filesystem::exists(folder_.path() / "out/01-never.png"));
    expectNoSandboxLeft();
  }
}

TEST_F(DemoUserTest, userTimeoutIsADeviation) {
  const Finished demo = play("user awaits \"snow\"\n", {"--timeout", "3"});
  EXPECT_EQ(demo.exitStatus, 1);
  EXPECT_THAT(demo.output, HasSubstr("timed out: line 3 of the scenario, user awaits \"snow\"\n"));
  expectNoSandboxLeft();
}

} // namespace
} // namespace icloud::test
