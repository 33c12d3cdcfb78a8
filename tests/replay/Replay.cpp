// What the replay prints of a capture, and which files and calls it refuses.

#include "ReplayRun.h"

#include <algorithm>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

std::string count(const std::string& label, std::size_t value) {
  const std::string number = std::to_string(value);
  return label + std::string(32 - label.size() - number.size(), ' ') + number + '\n';
}

class Replay : public testing::Test {
protected:
  ReplayRun replay;
};

TEST_F(Replay, perItemCaptureIsCountedAndItsModelPrinted) {
  const Finished result = replay.run({fixture("transfers.txt")});
  EXPECT_EQ(result.output, contentsOf(fixture("transfers.report.txt")));
  EXPECT_THAT(result.error, IsEmpty());
  EXPECT_EQ(result.exitStatus, 0);
}

TEST_F(Replay, captureOfGlobalMonitorIsRead) {
  const Finished result = replay.run({fixture("global.txt")});
  EXPECT_EQ(result.output, contentsOf(fixture("global.report.txt")));
  EXPECT_EQ(result.exitStatus, 0);
}

TEST_F(Replay, lineEndsOfEitherKindGiveSameReport) {
  std::string text = contentsOf(fixture("transfers.txt"));
  std::erase(text, '\r');
  replay.write("capture.txt", text);
  EXPECT_EQ(replay.run({"capture.txt"}).output, contentsOf(fixture("transfers.report.txt")));
}

TEST_F(Replay, fileNameMayHaveSpacesQuotesAndDashes) {
  const std::string text = contentsOf(fixture("transfers.txt"));
  for (const std::string name :
       {"my 'capture' \"$HOME\" `x`.txt", "line\nend", "-i", "été 📷.txt"}) {
    replay.write(name, text);
    const Finished result = replay.run({name});
    EXPECT_EQ(result.output, contentsOf(fixture("transfers.report.txt"))) << name;
    EXPECT_EQ(result.exitStatus, 0) << name;
  }
}

TEST_F(Replay, fileNamedLikeOptionIsReadAfterTwoDashes) {
  replay.write("--log", contentsOf(fixture("global.txt")));
  const Finished result = replay.run({"--", "--log"});
  EXPECT_EQ(result.output, contentsOf(fixture("global.report.txt")));
  EXPECT_THAT(result.error, IsEmpty());
}

TEST_F(Replay, linkToCaptureIsFollowed) {
  std::filesystem::create_symlink(fixture("transfers.txt"), replay.folder() / "link");
  EXPECT_EQ(replay.run({"link"}).output, contentsOf(fixture("transfers.report.txt")));
}

TEST_F(Replay, emptyCaptureGivesZeros) {
  replay.write("empty.txt", "");
  const Finished result = replay.run({"empty.txt"});
  EXPECT_THAT(result.output, StartsWith(count("lines read", 0)));
  EXPECT_THAT(result.output, HasSubstr("overall state         idle\n"));
  EXPECT_THAT(result.output, Not(HasSubstr("last line")));
  EXPECT_EQ(result.exitStatus, 0);
}

TEST_F(Replay, incompleteLastLineIsReported) {
  replay.write("half.txt",
               " o /com~apple~CloudDocs/a.txt ↑ 1%\n o /com~apple~CloudDocs/b.txt ↑ 2%");
  const Finished result = replay.run({"half.txt"});
  EXPECT_THAT(result.output, StartsWith(count("lines read", 1)));
  EXPECT_THAT(result.output, HasSubstr("\nThe last line has no line end and was not read.\n"));
  EXPECT_EQ(result.exitStatus, 0);
}

TEST_F(Replay, finishedTransferNoLongerHoldsState) {
  replay.write("done.txt", " o /com~apple~CloudDocs/a.txt ↑ 1%\n o /com~apple~CloudDocs/a.txt ☁\n");
  EXPECT_THAT(replay.run({"done.txt"}).output, HasSubstr("overall state         idle\n"));
}

TEST_F(Replay, everyLineOfLongListingIsRead) {
  std::string text;
  for (int i = 0; i < 20000; ++i)
    text += " o /com~apple~CloudDocs/Folder/File " + std::to_string(i) + ".txt ☁\n";
  replay.write("long.txt", text);
  const Finished result = replay.run({"long.txt"});
  EXPECT_THAT(result.output, StartsWith(count("lines read", 20000)));
  EXPECT_THAT(result.output, HasSubstr(count("item lines", 20000)));
}

TEST_F(Replay, binaryJunkIsCountedAsLines) {
  std::string junk;
  std::uint32_t state = 1;
  for (int i = 0; i < 200000; ++i) {
    state = state * 1664525 + 1013904223;
    junk += static_cast<char>(state >> 24);
  }
  junk += '\n';
  const auto lines = static_cast<std::size_t>(std::count(junk.begin(), junk.end(), '\n'));
  replay.write("junk", junk);
  const Finished result = replay.run({"junk"});
  EXPECT_THAT(result.output, StartsWith(count("lines read", lines)));
  EXPECT_EQ(result.exitStatus, 0);
}

TEST_F(Replay, logIsShownOnRequestOnly) {
  replay.write("one.txt", " o /com~apple~CloudDocs/a.txt ↑ 1%\n");
  EXPECT_THAT(replay.run({"one.txt"}).error, IsEmpty());
  const Finished result = replay.run({"--log", "one.txt"});
  EXPECT_THAT(result.error, HasSubstr("Driftmark: brctl monitor started (pid "));
  EXPECT_THAT(result.error, HasSubstr("Driftmark: uploading a.txt\n"));
  EXPECT_THAT(result.error, Not(HasSubstr("exited")));
}

TEST_F(Replay, noTemporaryFileRemains) {
  replay.run({fixture("transfers.txt")});
  EXPECT_EQ(replay.temporaryFiles(), 0U);
}

TEST_F(Replay, missingFileIsRefused) {
  const Finished result = replay.run({"nowhere.txt"});
  EXPECT_EQ(result.error, "replay: nowhere.txt: no such file\n");
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_EQ(result.exitStatus, 1);
}

TEST_F(Replay, folderIsRefused) {
  const Finished result = replay.run({"."});
  EXPECT_EQ(result.error, "replay: .: is a folder\n");
  EXPECT_EQ(result.exitStatus, 1);
}

TEST_F(Replay, pipeIsRefused) {
  ASSERT_EQ(::mkfifo((replay.folder() / "pipe").c_str(), 0600), 0);
  const Finished result = replay.run({"pipe"});
  EXPECT_EQ(result.error, "replay: pipe: is not an ordinary file\n");
  EXPECT_EQ(result.exitStatus, 1);
}

TEST_F(Replay, unreadableFileIsRefused) {
  if (::geteuid() == 0)
    GTEST_SKIP() << "everything is readable for this user";
  const auto file = replay.write("secret.txt", "x\n");
  std::filesystem::permissions(file, std::filesystem::perms::none);
  const Finished result = replay.run({"secret.txt"});
  EXPECT_THAT(result.error, HasSubstr("cannot be read"));
  EXPECT_EQ(result.exitStatus, 1);
}

TEST_F(Replay, wrongCallPrintsUsage) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{}, {"--unknown"}, {"one", "two"}}) {
    const Finished result = replay.run(arguments);
    EXPECT_THAT(result.error, StartsWith("usage: replay"));
    EXPECT_EQ(result.exitStatus, 2);
  }
  EXPECT_THAT(replay.run({"--help"}).output, StartsWith("usage: replay"));
}

} // namespace
} // namespace driftmark::test
