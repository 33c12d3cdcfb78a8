#include "monitor/StatusReport.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <ctime>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

// The jobs of a report.
const std::string downloadJob = "> downloader{7 b.mov} downloading: 40%\n";
const std::string uploadJob = "> upload{9 c.txt} active\n";

std::optional<StatusActivity> activity(int downloads, int uploads,
                                       std::vector<std::string> directories) {
  return StatusActivity{
      .downloads = downloads, .uploads = uploads, .directories = std::move(directories)};
}

TEST(StatusReportTest, jobsAreCountedAndTheirDirectoriesListedInOrder) {
  EXPECT_EQ(parseStatus("Under /A\n" + downloadJob + downloadJob + "Under /B\n" + uploadJob),
            activity(2, 1, {"/A", "/B"}));
}

TEST(StatusReportTest, directoryIsListedOnceInFirstSeenOrder) {
  EXPECT_EQ(parseStatus("Under /B\n" + uploadJob + "Under /A\n" + uploadJob + "Under /B\n" +
                        downloadJob + uploadJob),
            activity(1, 3, {"/B", "/A"}));
}

TEST(StatusReportTest, directoryWithoutJobsIsNotListed) {
  EXPECT_EQ(parseStatus("Under /A\nUnder /B\n" + uploadJob + "Under /C\n"), activity(0, 1, {"/B"}));
}

TEST(StatusReportTest, jobBeforeAnyDirectoryIsCountedWithoutOne) {
  EXPECT_EQ(parseStatus(downloadJob), activity(1, 0, {}));
  EXPECT_EQ(parseStatus(downloadJob + "Under /A\n" + uploadJob), activity(1, 1, {"/A"}));
}

TEST(StatusReportTest, directoryIsTheTextFromTheSlashToTheTrimmedEnd) {
  EXPECT_EQ(parseStatus(" \tUnder /Users/ada/Library/Mobile Documents/com~apple~CloudDocs \t\n" +
                        uploadJob),
            activity(0, 1, {"/Users/ada/Library/Mobile Documents/com~apple~CloudDocs"}));
  EXPECT_EQ(parseStatus("Under /\n" + uploadJob), activity(0, 1, {"/"}));
  EXPECT_EQ(parseStatus("Under /A, B\n" + uploadJob), activity(0, 1, {"/A, B"}));
}

TEST(StatusReportTest, otherLinesAreNoHeaders) {
  for (const std::string line : {"Under A", "under /A", "Under  /A", "xUnder /A", "Under\t/A",
                                 "Under", "Under ", "> Under /A"}) {
    const std::string report = "Under /old\n" + line + "\n";
    EXPECT_EQ(parseStatus(report + uploadJob), activity(0, 1, {"/old"})) << line;
  }
}

TEST(StatusReportTest, indentedJobLinesAreRecognised) {
  EXPECT_EQ(parseStatus("Under /A\n  " + downloadJob + "\t \t" + uploadJob),
            activity(1, 1, {"/A"}));
}

TEST(StatusReportTest, jobLineNeedsItsMarkAndASpace) {
  for (const std::string mark : {"", ">", ">>", ">\t", "- ", "x> ", "\r> "})
    EXPECT_EQ(parseStatus("Under /A\n" + mark + "upload{9} active\n"), std::nullopt) << mark;
}

TEST(StatusReportTest, inactiveJobsDoNotCount) {
  for (const std::string line :
       {"> downloader{7} waiting", "> downloading: 7", "> upload{9} waiting", "> upload{9}active",
        "> active", "> uploader{9} inactive", "> Upload{9} active", "> upload {9} active",
        "> Downloader{7} downloading:", "> downloader{7} Downloading:",
        "> downloader {downloading:"})
    EXPECT_EQ(parseStatus("Under /A\n" + line + "\n"), std::nullopt) << line;
}

TEST(StatusReportTest, downloaderThatDoesNotDownloadIsTestedAsUpload) {
  EXPECT_EQ(parseStatus("> downloader{7} waits for upload{9} active\n"), activity(0, 1, {}));
}

TEST(StatusReportTest, lineThatFitsBothIsADownload) {
  EXPECT_EQ(parseStatus("> downloader{7} downloading: upload{9} active\n"), activity(1, 0, {}));
}

TEST(StatusReportTest, markersCountInAnyOrder) {
  EXPECT_EQ(parseStatus("> downloading: downloader{7}\n>  active upload{9}\n"), activity(1, 1, {}));
}

TEST(StatusReportTest, colourCodesAroundTheMarkersAreRemoved) {
  EXPECT_EQ(parseStatus("\x1b[1mUnder \x1b[34m/A\x1b[0m\n"
                        " \x1b[32m>\x1b[0m down\x1b[1mloader{7}\x1b[m downloading\x1b[0m: 4%\n"
                        "\x1b[0m> upload\x1b[31m{9} \x1b[0mactive\n"),
            activity(1, 1, {"/A"}));
}

TEST(StatusReportTest, carriageReturnsAreNotTrimmed) {
  EXPECT_EQ(parseStatus("Under /A\r\n> upload{9} active\r\n"), activity(0, 1, {"/A\r"}));
}

TEST(StatusReportTest, lastLineNeedsNoLineEnd) {
  EXPECT_EQ(parseStatus("Under /A\n> upload{9} active"), activity(0, 1, {"/A"}));
}

TEST(StatusReportTest, reportWithoutJobsIsAbsent) {
  EXPECT_EQ(parseStatus(""), std::nullopt);
  EXPECT_EQ(parseStatus("\n\n \n"), std::nullopt);
  EXPECT_EQ(parseStatus("Under /A\nnothing to do\n"), std::nullopt);
}

TEST(StatusReportTest, directoriesAreComparedByteForByte) {
  EXPECT_EQ(parseStatus("Under /caf\u00e9\n" + uploadJob + "Under /cafe\u0301\n" + uploadJob +
                        "Under /caf\u00e9/\n" + uploadJob),
            activity(0, 3, {"/caf\u00e9", "/cafe\u0301", "/caf\u00e9/"}));
}

/// A report of so many directories, with a job each.
std::string reportOf(std::size_t directories) {
  std::string report;
  for (std::size_t number = 0; number < directories; ++number)
    report.append("Under /Users/ada/").append(std::to_string(number)).append("\n") += uploadJob;
  return report;
}

TEST(StatusReportTest, costOfADirectoryDoesNotGrowWithTheirNumber) {
  const auto cost = [](int directories) {
    const std::string report = reportOf(static_cast<std::size_t>(directories));
    auto least = std::numeric_limits<std::clock_t>::max();
    for (int round = 0; round < 3; ++round) {
      const std::clock_t start = std::clock();
      EXPECT_EQ(parseStatus(report).value().uploads, directories);
      least = std::min(least, std::clock() - start);
    }
    return least;
  };
  EXPECT_LT(cost(20'000), 80 * cost(1000)) << "twenty times as many";
}

TEST(StatusReportTest, cancelledReadingOfALongReportEnds) {
  const std::string report = reportOf(20'000);
  std::atomic<bool> isCancelled = false;
  EXPECT_EQ(parseStatus(report, &isCancelled).value().uploads, 20'000);
  isCancelled = true;
  EXPECT_EQ(parseStatus(report, &isCancelled), std::nullopt);
}

TEST(StatusReportTest, cancelledReadingOfAShortReportHasItsResult) {
  const std::atomic<bool> isCancelled = true;
  EXPECT_EQ(parseStatus("Under /A\n" + uploadJob, &isCancelled), activity(0, 1, {"/A"}));
}

TEST(StatusActivityTest, equalWhenAllFieldsAreEqualInOrder) {
  const StatusActivity activity{.downloads = 1, .uploads = 2, .directories = {"/a", "/b"}};
  StatusActivity other = activity;
  EXPECT_EQ(activity, other);
  other.downloads = 2;
  EXPECT_NE(activity, other);
  other = activity;
  other.uploads = 0;
  EXPECT_NE(activity, other);
  other = activity;
  other.directories = {"/b", "/a"};
  EXPECT_NE(activity, other);
}

} // namespace
} // namespace driftmark::test
