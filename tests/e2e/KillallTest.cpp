#include "SimulatedSystem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

namespace icloud::test {
namespace {

Finished killall(const SimulatedSystem& system, std::vector<std::string> arguments) {
  return runToEnd({system.sandbox().root().killall(), std::move(arguments), {}});
}

TEST(Killall, onlyDaemonOfOwnSystemEnds) {
  SimulatedSystem system;
  SimulatedSystem other;
  system.play("at 60s end\n");
  other.play("at 60s end\n");
  const Finished killed = killall(system, {"bird"});
  EXPECT_EQ(killed.exitStatus, 0);
  EXPECT_EQ(killed.output + killed.error, "");
  const int status = system.bird().process().wait();
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_EQ(other.runBrctl({"quota"}).exitStatus, 0);
}

TEST(Killall, missingProcessIsReported) {
  SimulatedSystem system;
  SimulatedSystem other;
  other.play("at 60s end\n");
  for (const char* const name : {"bird", "bir", "usr/libexec/bird", ""}) {
    const Finished killed = killall(system, {name});
    EXPECT_EQ(killed.exitStatus, 1) << name;
    EXPECT_EQ(killed.error, "No matching processes belonging to you were found\n") << name;
  }
}

TEST(Killall, invalidCommandLineShowsUsage) {
  const SimulatedSystem system;
  for (const auto& command : std::vector<std::vector<std::string>>{{}, {"-9", "x"}, {"-9"}}) {
    const Finished killed = killall(system, command);
    EXPECT_EQ(killed.exitStatus, 1);
    EXPECT_THAT(killed.error, testing::StartsWith("usage: killall"));
  }
}

} // namespace
} // namespace icloud::test
