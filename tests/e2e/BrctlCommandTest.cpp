#include "SimulatedSystem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sysexits.h>

namespace icloud::test {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const std::string jobs = "file \"Films/a.mov\" 4KB remote\n"
                         "file \"Films/b.mov\" 4KB\n"
                         "error \"Films/b.mov\"\n"
                         "jobs 2 downloading in \"Photos\"\n"
                         "jobs 1 uploading in \"Letters\"\n"
                         "at 60s end\n";

TEST(BrctlStatus, foldersAreListedWithTheirJobs) {
  SimulatedSystem system;
  system.play(jobs);
  const Finished status = system.runBrctl({"status"});
  EXPECT_EQ(status.exitStatus, 0);
  EXPECT_THAT(status.error, IsEmpty());
  EXPECT_THAT(status.output, StartsWith("<com.apple.CloudDocs[1] "));
  const std::string under = "\n  Under " + system.sandbox().drive().string();
  const auto photos = status.output.find(under + "/Photos\n    > \"item 1\"");
  const auto letters = status.output.find(under + "/Letters\n    > \"item 1\"");
  ASSERT_NE(photos, std::string::npos);
  ASSERT_NE(letters, std::string::npos);
  EXPECT_LT(photos, letters);
  EXPECT_THAT(status.output, ContainsRegex("\n    > \"item 2\" .*downloader\\{downloading:"));
  EXPECT_THAT(status.output, ContainsRegex("\n    > \"item 1\" .*upload\\{state: active"));
  EXPECT_THAT(status.output, Not(HasSubstr("\x1b")));
}

TEST(BrctlStatus, failedUploadIsNotActive) {
  SimulatedSystem system;
  system.play(jobs);
  EXPECT_THAT(system.runBrctl({"status"}).output,
              ContainsRegex("\n    > \"b.mov\" .*upload\\{state: failed"));
}

TEST(BrctlStatus, itemTransfersAreListed) {
  SimulatedSystem system;
  system.play("file \"Films/a.mov\" 4KB remote\n"
              "at 0s download \"Films/a.mov\" over 60s every 30s\n"
              "at 60s end\n",
              "quota");
  system.runBrctl({"quota"});
  system.bird().output().readUntil(" event ");
  EXPECT_THAT(system.runBrctl({"status"}).output,
              ContainsRegex("\n    > \"a.mov\" .*downloader\\{downloading:"));
}

TEST(BrctlStatus, terminalOutputIsColoured) {
  SimulatedSystem system;
  system.play(jobs);
  Tool status = system.brctl({"status"}, Channel::terminal());
  const std::string text = status.output().readToEnd();
  EXPECT_THAT(text, HasSubstr("  \x1b[1mUnder /"));
  EXPECT_THAT(text, HasSubstr("\x1b[32mdownloader{\x1b[0mdownloading:"));
}

TEST(BrctlStatus, idleDriveHasNoJobs) {
  SimulatedSystem system;
  system.play("file \"a\" 4KB\nat 60s end\n");
  EXPECT_THAT(system.runBrctl({"status"}).output, Not(HasSubstr("Under")));
}

TEST(BrctlQuota, remainingBytesArePrinted) {
  SimulatedSystem system;
  system.play("quota 48318382080\nat 60s end\n");
  const Finished quota = system.runBrctl({"quota"});
  EXPECT_EQ(quota.exitStatus, 0);
  EXPECT_EQ(quota.output, "48318382080 bytes of quota remaining in personal account\n");
  EXPECT_THAT(quota.error, IsEmpty());
}

TEST(BrctlFailure, everyCommandFailsWithoutBird) {
  const SimulatedSystem system;
  const std::vector<std::vector<std::string>> commands{
      {"monitor", "-i", "com.apple.CloudDocs"}, {"monitor", "-g", "-i"}, {"status"}, {"quota"}};
  for (const auto& command : commands) {
    const Finished finished = system.runBrctl(command);
    EXPECT_EQ(finished.exitStatus, EX_UNAVAILABLE);
    EXPECT_THAT(finished.output, IsEmpty());
    EXPECT_EQ(finished.error, "brctl: bird is not running\n");
  }
}

TEST(BrctlFailure, unknownContainerIsRefused) {
  SimulatedSystem system;
  system.play("at 60s end\n");
  const Finished finished = system.runBrctl({"monitor", "-i", "com.example.Other"});
  EXPECT_EQ(finished.exitStatus, EX_UNAVAILABLE);
  EXPECT_THAT(finished.error, HasSubstr("brctl: no such container\n"));
}

TEST(BrctlUsage, invalidCommandLineShowsUsage) {
  const SimulatedSystem system;
  const std::vector<std::vector<std::string>> commands{
      {},
      {"frobnicate"},
      {"monitor"},
      {"monitor", "-i"},
      {"monitor", "-g"},
      {"monitor", "com.apple.CloudDocs"},
      {"monitor", "-x", "-i", "com.apple.CloudDocs"},
      {"monitor", "-g", "-i", "com.apple.CloudDocs"},
      {"monitor", "-i", "com.apple.CloudDocs", "com.example.Other"},
      {"evict"},
      {"evict", "-f", "/a"},
      {"download"},
      {"status", "now"},
      {"quota", "-v"}};
  for (const auto& command : commands) {
    const Finished finished = system.runBrctl(command);
    EXPECT_EQ(finished.exitStatus, EX_USAGE) << testing::PrintToString(command);
    EXPECT_THAT(finished.output, IsEmpty());
    EXPECT_THAT(finished.error, StartsWith("brctl: "));
    EXPECT_THAT(finished.error, HasSubstr("usage: brctl monitor"));
  }
}

TEST(BrctlUsage, helpExitsWithZero) {
  const Finished help = SimulatedSystem().runBrctl({"help"});
  EXPECT_EQ(help.exitStatus, 0);
  EXPECT_THAT(help.output, StartsWith("usage: brctl monitor"));
}

} // namespace
} // namespace icloud::test
