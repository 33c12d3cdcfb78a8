#include "SimulatedSystem.h"

#include <csignal>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sysexits.h>

namespace icloud::test {
namespace {

using testing::HasSubstr;
using testing::Not;

const std::vector<std::string> itemMonitor{"monitor", "-i", "com.apple.CloudDocs"};

class Launchd : public testing::Test {
protected:
  void restartBird() {
    const Finished killed = runToEnd({system_.sandbox().root().killall(), {"bird"}, {}});
    ASSERT_EQ(killed.exitStatus, 0) << killed.error;
    launchd().output().readUntil(" resumed\n", ++restarts_);
  }

  Tool& launchd() { return system_.bird(); }
  std::filesystem::path drive() const { return system_.sandbox().drive(); }

  SimulatedSystem system_;
  unsigned restarts_ = 0;
};

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != text.npos; at = text.find(part, at + 1))
    ++count;
  return count;
}

// A line begins with the scenario's time.
double secondsBefore(const std::string& reported, std::size_t end) {
  return std::stod(reported.substr(reported.rfind('\n', end) + 1));
}

TEST_F(Launchd, restartEndsStall) {
  system_.playSupervised("file \"film\" 1MB remote\n"
                         "at 0s download \"film\" over 200ms stalled at 50% for 10m\n"
                         "at 20m end\n",
                         "");
  launchd().output().readUntil(" stalls\n");
  restartBird();
  const std::string reported = launchd().output().readUntil("\" is finished\n");
  EXPECT_EQ(countOf(reported, " stalls\n"), 1u);
  EXPECT_THAT(reported, Not(HasSubstr("trouble")));
  struct stat status {};
  ASSERT_EQ(stat((drive() / "film").c_str(), &status), 0);
  EXPECT_GE(status.st_blocks * 512, 1'000'000);
}

TEST_F(Launchd, stateSurvivesEveryRestart) {
  system_.playSupervised("file \"here\" 10KB\nfile \"doomed\" 10KB\nquota 1\n"
                         "at 0s quota 5\n"
                         "at 0s evict \"here\"\n"
                         "at 0s upload \"new\" 10KB over 10ms\n"
                         "at 10ms vanish \"doomed\"\n"
                         "at 20ms error \"new\"\n"
                         "at 20ms jobs 2 uploading in \"Films\"\n"
                         "at 20m end\n",
                         "");
  launchd().output().readUntil("jobs 2");
  for (int time = 0; time < 2; ++time) {
    restartBird();
    EXPECT_THAT(system_.runBrctl({"quota"}).output, HasSubstr("5 bytes"));
    EXPECT_EQ(countOf(system_.runBrctl({"status"}).output, "upload{state: active"), 2u);
    Tool monitor = system_.brctl(itemMonitor, Channel::terminal());
    const std::string listed = monitor.output().readUntil("watching");
    EXPECT_THAT(listed, HasSubstr("/here ☁ \x1b[2mnot downloaded"));
    EXPECT_THAT(listed, HasSubstr("/new ☁ \x1b[1;31mUpload Error 28"));
    EXPECT_THAT(listed, Not(HasSubstr("doomed")));
  }
}

TEST_F(Launchd, clockRunsWhileDaemonIsDown) {
  system_.playSupervised("at 0s quota 1\nat 900ms quota 2\nat 1200ms end\n", "");
  launchd().output().readUntil("quota 1\n");
  restartBird();
  restartBird();
  const std::string reported = launchd().output().readUntil(" end\n");
  EXPECT_EQ(countOf(reported, " event quota 1\n"), 1u);
  EXPECT_EQ(countOf(reported, " event quota 2\n"), 1u);
  const auto second = reported.rfind(" resumed");
  const auto first = reported.rfind(" resumed", second - 1);
  EXPECT_GT(secondsBefore(reported, second), secondsBefore(reported, first));
}

TEST_F(Launchd, scenarioMayBeginAfterRestart) {
  system_.playSupervised("at 0s end\n", "quota,status");
  EXPECT_EQ(system_.runBrctl({"quota"}).exitStatus, 0);
  restartBird();
  EXPECT_THAT(launchd().output().readSoFar(), Not(HasSubstr("begin")));
  EXPECT_EQ(system_.runBrctl({"status"}).exitStatus, 0);
  launchd().output().readUntil(" end\n");
}

TEST_F(Launchd, awaitMonitorsSurvivesRestart) {
  system_.playSupervised("at 0s await monitors\nat 100ms end\n", "");
  launchd().output().readUntil("await monitors");
  restartBird();
  Tool items = system_.brctl(itemMonitor, Channel::terminal());
  Tool global = system_.brctl({"monitor", "-g", "-i"}, Channel::terminal());
  EXPECT_THAT(launchd().output().readUntil(" end\n"), HasSubstr("\n0.1 end\n"));
}

TEST_F(Launchd, daemonKilledByScenarioIsRestarted) {
  system_.playSupervised("at 0s quota 1\nat 10ms kill bird\nat 20ms quota 2\nat 30ms end\n", "");
  const std::string reported = launchd().output().readUntil(" end\n");
  EXPECT_EQ(countOf(reported, "kill bird\n"), 1u);
  EXPECT_EQ(countOf(reported, " resumed\n"), 1u);
  EXPECT_THAT(system_.runBrctl({"quota"}).output, HasSubstr("2 bytes"));
}

TEST_F(Launchd, restartDisconnectsMonitors) {
  system_.playSupervised("at 20m end\n");
  Tool monitor = system_.brctl(itemMonitor, Channel::terminal());
  monitor.output().readUntil("watching");
  restartBird();
  EXPECT_THAT(monitor.output().readToEnd(), HasSubstr("the connection to bird was lost"));
}

TEST_F(Launchd, sigtermEndsDaemonToo) {
  system_.playSupervised("at 20m end\n");
  const int status = launchd().process().end(std::chrono::seconds(10));
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  launchd().output().readToEnd();
  EXPECT_FALSE(std::filesystem::exists(system_.sandbox().root().runFolder() / "bird.socket"));
}

TEST_F(Launchd, killedLaunchdLeavesNoDaemon) {
  system_.playSupervised("at 20m end\n");
  launchd().process().signal(SIGKILL);
  launchd().output().readToEnd();
}

TEST_F(Launchd, newLaunchdBeginsScenarioAnew) {
  system_.playSupervised("quota 1\nat 20m end\n", "");
  launchd().process().end(std::chrono::seconds(10));
  system_.playSupervised("quota 2\nat 20m end\n", "");
  EXPECT_THAT(system_.runBrctl({"quota"}).output, HasSubstr("2 bytes"));
}

TEST_F(Launchd, failingDaemonEndsLaunchdWithItsStatus) {
  const TemporaryFolder folder;
  const auto scenario = folder.write("bad.scenario", "at 1s dance\n");
  const Finished ran = runToEnd(
      {system_.sandbox().root().launchd(), {"--home", folder.path(), "--scenario", scenario}, {}});
  EXPECT_EQ(ran.exitStatus, EX_DATAERR);
  EXPECT_THAT(ran.error, HasSubstr("bird: "));
  EXPECT_EQ(runToEnd({system_.sandbox().root().launchd(), {}, {}}).exitStatus, EX_USAGE);
}

TEST_F(Launchd, resumingWithoutValidJournalFails) {
  const TemporaryFolder folder;
  const auto scenario = folder.write("a.scenario", "at 1s end\n");
  const std::vector<std::string> arguments{"--home", folder.path(), "--scenario", scenario,
                                           "--resume"};
  const Finished missing = runToEnd({system_.sandbox().root().bird(), arguments, {}});
  EXPECT_EQ(missing.exitStatus, EX_OSERR);
  EXPECT_THAT(missing.error, HasSubstr("nothing to resume from"));
  std::ofstream(system_.sandbox().root().birdJournal()) << "8:progress3:abc1:x";
  EXPECT_EQ(runToEnd({system_.sandbox().root().bird(), arguments, {}}).exitStatus, EX_OSERR);
  std::ofstream(system_.sandbox().root().birdJournal()) << "8:progress3:abc1:x1:y\n";
  EXPECT_EQ(runToEnd({system_.sandbox().root().bird(), arguments, {}}).exitStatus, EX_OSERR);
}

} // namespace
} // namespace icloud::test
