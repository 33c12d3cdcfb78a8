#include "DiskState.h"
#include "SimulatedSystem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <sysexits.h>

namespace icloud::test {
namespace {

using testing::HasSubstr;

TEST(Bird, initialFilesAndFoldersAreCreated) {
  SimulatedSystem system;
  system.play("folder \"Empty\"\n"
              "files 12 \"A/b c/Été {n}.txt\" 10KB\n"
              "file \"A/far.mov\" 5MB remote\n"
              "at 60s end\n");
  const auto drive = system.sandbox().drive();
  EXPECT_TRUE(std::filesystem::is_directory(drive / "Empty"));
  expectDownloaded(drive / "A/b c/Été 01.txt", 10'000);
  expectDownloaded(drive / "A/b c/Été 12.txt", 10'000);
  expectEvicted(drive / "A/far.mov", 5'000'000);
}

TEST(Bird, transfersAndEvictionsChangeBlocksOnDisk) {
  SimulatedSystem system;
  system.play("file \"fetched\" 500KB remote\n"
              "file \"evicted\" 500KB\n"
              "file \"given up\" 500KB remote\n"
              "file \"doomed\" 500KB remote\n"
              "at 0s download \"fetched\" over 200ms\n"
              "at 0s upload \"new\" 500KB over 200ms\n"
              "at 0s evict \"evicted\"\n"
              "at 0s download \"given up\" over 200ms every 20ms cancelled at 50%\n"
              "at 0s download \"doomed\" over 200ms vanishing at 50%\n"
              "at 300ms end\n",
              "");
  system.bird().output().readUntil(" end\n");
  const auto drive = system.sandbox().drive();
  expectDownloaded(drive / "fetched", 500'000);
  expectDownloaded(drive / "new", 500'000);
  expectEvicted(drive / "evicted", 500'000);
  expectEvicted(drive / "given up", 500'000);
  EXPECT_FALSE(std::filesystem::exists(drive / "doomed"));
}

TEST(Bird, downloadInFlightAllocatesBlocksGradually) {
  SimulatedSystem system;
  system.play("file \"film\" 1MB remote\n"
              "at 0s download \"film\" over 100ms stalled at 50% for 60s\n"
              "at 60s end\n",
              "");
  system.bird().output().readUntil(" stalls\n");
  const auto film = system.sandbox().drive() / "film";
  EXPECT_EQ(statOf(film).st_size, 1'000'000);
  EXPECT_GE(statOf(film).st_blocks * 512, 500'000);
  EXPECT_LT(statOf(film).st_blocks * 512, 1'000'000);
  EXPECT_EQ(stateAttribute(film).value_or("downloading"), "downloading");
}

TEST(Bird, failedStepIsReportedAndScenarioContinues) {
  SimulatedSystem system;
  system.play("file \"far\" 1KB remote\nat 0s evict \"far\"\nat 100ms end\n", "");
  const std::string reported = system.bird().output().readUntil(" end\n");
  EXPECT_THAT(reported, HasSubstr(".scenario:2: not in sync, so it cannot be evicted: \"far\"\n"));
}

TEST(Bird, clockStopsWhileAwaitingMonitors) {
  SimulatedSystem system;
  system.play("at 0s await monitors\nat 100ms end\n", "quota");
  system.runBrctl({"quota"});
  system.bird().output().readUntil("await monitors");
  Tool items = system.brctl({"monitor", "-i", "com.apple.CloudDocs"}, Channel::terminal());
  items.output().readUntil("watching");
  EXPECT_EQ(system.runBrctl({"status"}).exitStatus, 0);
  Tool global = system.brctl({"monitor", "-g", "-i"}, Channel::terminal());
  EXPECT_THAT(system.bird().output().readUntil(" end\n"), HasSubstr("\n0.1 end\n"));
}

TEST(Bird, scenarioRepeats) {
  SimulatedSystem system;
  system.play("file \"a\" 1KB\n"
              "at 0s upload \"a\" over 50ms\n"
              "at 60ms error \"a\"\n"
              "at 80ms clear \"a\"\n"
              "at 100ms repeat\n",
              "");
  const std::string reported = system.bird().output().readUntil(" clear \"a\"\n", 3);
  EXPECT_THAT(reported, testing::Not(HasSubstr("trouble")));
}

TEST(Bird, resumedDaemonGoesOnRepeating) {
  SimulatedSystem system;
  system.play("file \"a\" 1KB\nat 0s upload \"a\" over 50ms\nat 100ms repeat\n", "");
  system.bird().output().readUntil(" repeat\n");
  system.killBird();
  system.resume();
  const std::string reported = system.bird().output().readUntil("\"a\" is finished\n", 2);
  EXPECT_THAT(reported, testing::Not(HasSubstr("trouble")));
}

/// A download for a client lasts a second: ten rounds.
TEST(Bird, downloadForClientOutlivesRound) {
  SimulatedSystem system;
  system.play("file \"far\" 1KB remote\nat 100ms repeat\n", "");
  const auto far = system.sandbox().drive() / "far";
  EXPECT_EQ(system.runBrctl({"download", far}).exitStatus, 0);
  system.bird().output().readUntil("the download of \"far\" is finished");
  expectDownloaded(far, 1000);
}

TEST(Bird, sigtermEndsDaemonAndRemovesSocket) {
  SimulatedSystem system;
  system.play("at 60s end\n");
  const auto socket = system.sandbox().root().runFolder() / SystemRoot::birdSocket;
  EXPECT_TRUE(std::filesystem::exists(socket));
  const int status = system.bird().process().end(std::chrono::seconds(10));
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_FALSE(std::filesystem::exists(socket));
}

TEST(Bird, socketOfKilledDaemonIsReplaced) {
  SimulatedSystem system;
  system.play("quota 1\nat 60s end\n");
  system.bird().process().signal(SIGKILL);
  system.bird().process().wait();
  std::filesystem::remove_all(system.sandbox().home() / "Library");
  system.play("quota 2\nat 60s end\n");
  EXPECT_THAT(system.runBrctl({"quota"}).output, HasSubstr("2 bytes"));
}

TEST(Bird, rootPathMayExceedSocketPathLimit) {
  const TemporaryFolder folder;
  const auto longRoot = folder.path() / std::string(150, 'x') / std::string(150, 'y');
  std::filesystem::create_directories(longRoot);
  const SystemRoot root(longRoot / "root");
  std::filesystem::copy(simulatedTools(), root.path(), std::filesystem::copy_options::recursive);
  const auto scenario = folder.write("a.scenario", "quota 77\nat 60s end\n");
  Tool bird(root.bird(), {"--home", folder.path() / "home", "--scenario", scenario},
            Channel::pipe());
  bird.output().readUntil(" ready\n");
  EXPECT_THAT(runToEnd({root.brctl(), {"quota"}, {}}).output, HasSubstr("77 bytes of quota"));
}

TEST(Bird, checkReportsFileAndLineOfMistake) {
  const SimulatedSystem system;
  const TemporaryFolder folder;
  const auto file = folder.write("bad.scenario", "quota 1\n\nat 1s dance\n");
  const Finished bird = runToEnd({system.sandbox().root().bird(), {"--check", file}, {}});
  EXPECT_EQ(bird.exitStatus, EX_DATAERR);
  EXPECT_EQ(bird.error, "bird: " + file.string() + ":3: unknown verb \"dance\"\n");
}

TEST(Bird, invalidCommandLineShowsUsage) {
  const SimulatedSystem system;
  const std::vector<std::vector<std::string>> commands{
      {}, {"--home", "x"}, {"--scenario"}, {"--begin-after", "tea"}, {"--dance"}};
  for (const auto& command : commands) {
    const Finished bird = runToEnd({system.sandbox().root().bird(), command, {}});
    EXPECT_EQ(bird.exitStatus, EX_USAGE);
    EXPECT_THAT(bird.error, HasSubstr("usage: bird"));
  }
}

TEST(Bird, everyShippedScenarioIsValid) {
  const SimulatedSystem system;
  for (const auto& entry : std::filesystem::directory_iterator(sourceFile("simulator/scenarios"))) {
    const Finished bird = runToEnd({system.sandbox().root().bird(), {"--check", entry.path()}, {}});
    EXPECT_EQ(bird.exitStatus, 0) << bird.error;
  }
}

} // namespace
} // namespace icloud::test
