// What the replay prints of a capture, and which files and calls it refuses.

#include "ReplayRun.h"

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

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

/// What a report says of each item, without the names and in any order.
std::vector<std::string> withoutNames(const std::string& report) {
  std::vector<std::string> lines;
  std::istringstream stream(report);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line.substr(0, line.find("  /")));
  std::sort(lines.begin(), lines.end());
  return lines;
}

TEST_F(Replay, anonymisedCaptureHasSameCountsAndStates) {
  const Finished anonymised = replay.run({"--anonymise", fixture("transfers.txt")});
  ASSERT_EQ(anonymised.exitStatus, 0) << anonymised.error;
  replay.write("capture.txt", anonymised.output);
  const Finished result = replay.run({"capture.txt"});
  EXPECT_EQ(withoutNames(result.output), withoutNames(contentsOf(fixture("transfers.report.txt"))));
  EXPECT_EQ(replay.run({"--anonymise", fixture("transfers.txt")}).output, anonymised.output);
}

TEST_F(Replay, anonymisedCaptureHasNoNameAndSameLengths) {
  const std::string capture = contentsOf(fixture("transfers.txt"));
  const std::string anonymised = replay.run({"--anonymise", fixture("transfers.txt")}).output;
  for (const char* const name : {"Documents", "report", "pdf", "old film", "mov", "Fotos", "📷",
                                 "été", "big.", "draft", "clash", "wait.", "music", "m4a", "bell"})
    EXPECT_THAT(anonymised, Not(HasSubstr(name)));
  for (const char* const kept :
       {"com~apple~CloudDocs", "/.DS_Store ☁", "/.Trash/", "not downloaded", "Upload Error 28",
        "\x1b[32m↑\x1b[0m 55.5%", "NSProgress"})
    EXPECT_THAT(anonymised, HasSubstr(kept));
  ASSERT_EQ(anonymised.size(), capture.size());
  for (std::size_t at = 0; at < capture.size(); ++at)
    if (std::string_view("\r\n\x1b /").find(capture[at]) != std::string_view::npos) {
      EXPECT_EQ(anonymised[at], capture[at]) << at;
    }
}

TEST_F(Replay, globalCaptureHasNoNamesToReplace) {
  EXPECT_EQ(replay.run({"--anonymise", fixture("global.txt")}).output,
            contentsOf(fixture("global.txt")));
}

TEST_F(Replay, manyShortNamesStayDifferent) {
  std::string capture;
  for (char letter = 'a'; letter <= 'z'; ++letter)
    capture += std::string(" o /com~apple~CloudDocs/") + letter + " ↑ 1%\n";
  replay.write("short.txt", capture);
  replay.write("capture.txt", replay.run({"--anonymise", "short.txt"}).output);
  EXPECT_THAT(replay.run({"capture.txt"}).output, HasSubstr("active (26)\n"));
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
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{},
                                                    {"--unknown"},
                                                    {"one", "two"},
                                                    {"--log", "--anonymise", "one"}}) {
    const Finished result = replay.run(arguments);
    EXPECT_EQ(result.error, "driftmark_replay: wrong arguments; see --help\n");
    EXPECT_EQ(result.exitStatus, 2);
  }
  EXPECT_THAT(replay.run({"--help"}).output, StartsWith("usage: driftmark_replay"));
}

} // namespace
} // namespace driftmark::test
