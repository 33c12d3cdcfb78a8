#include "core/MonitorTest.h"

#include <string>

namespace driftmark::test {
namespace {

using namespace std::string_literals;

const std::string docs = "/com~apple~CloudDocs";
const std::string cloud = " \u2601";
const std::string notDownloaded = " \u2601 not downloaded";

class ItemChangesTest : public MonitorTest {
protected:
  void SetUp() override { start(); }

  std::string onlyLogLine() {
    const Lines lines = takeLog();
    return lines.size() == 1 ? lines.front() : testing::PrintToString(lines);
  }

  /// Whether the monitor now reads a "not downloaded" line as an eviction.
  bool isKnownCurrent(const std::string& path) {
    return item(path, notDownloaded) && !monitor->recent().empty() && latest().path == full(path) &&
           latest().kind == RecentKind::evicted;
  }

  void expectNothingHappened() {
    EXPECT_TRUE(monitor->active().empty());
    EXPECT_TRUE(monitor->recent().empty());
    EXPECT_TRUE(monitor->issues().empty());
    EXPECT_EQ(takeLog(), Lines{});
    EXPECT_EQ(changes, 0);
  }
};

// ---- cleaning ----

TEST_F(ItemChangesTest, colouredProgressLineWithCarriageReturnStartsAnUpload) {
  EXPECT_EQ(print("\x1b[1m o " + docs + "/a.txt \u2191 45%\r\n"), 1);
  ASSERT_TRUE(active(docs + "/a.txt"));
  const ActiveItem& upload = transfer(docs + "/a.txt");
  EXPECT_EQ(upload.path, full(docs + "/a.txt"));
  EXPECT_EQ(upload.direction, Direction::upload);
  EXPECT_EQ(upload.percent, 45.0);
  EXPECT_EQ(upload.lastUpdate, now());
  EXPECT_EQ(onlyLogLine(), "Driftmark: uploading a.txt");
}

TEST_F(ItemChangesTest, colourSequencesAreRemovedAnywhereInTheLine) {
  EXPECT_TRUE(
      line("\x1b[0;1m \x1b[mo\x1b[32m /fold\x1b[1;31mer/a.txt\x1b[0m \u2191\x1b[;m 4\x1b[0m5%"));
  ASSERT_TRUE(active("/folder/a.txt"));
  EXPECT_EQ(transfer("/folder/a.txt").percent, 45.0);
  EXPECT_EQ(onlyLogLine(), "Driftmark: uploading a.txt");
}

TEST_F(ItemChangesTest, lineIsCleanedEvenAfterAFolderWithAnEscape) {
  // The first folder after cleaning has the same bytes as the second one before cleaning.
  EXPECT_FALSE(line(" o /A\x1b\x1b[m[1mB/x \u2601"));
  EXPECT_FALSE(line(" o /A\x1b[1mB/y \u2601"));
  EXPECT_TRUE(line(" o /AB/y \u2601 not downloaded"));
  EXPECT_EQ(onlyLogLine(), "Driftmark: evicted y");
}

TEST_F(ItemChangesTest, otherEscapeSequencesAreKept) {
  EXPECT_FALSE(line("\x1b[2K o /a.txt \u2191 45%"));
  EXPECT_FALSE(line("\x1b[1 o /a.txt \u2191 45%"));
  expectNothingHappened();
  EXPECT_TRUE(line(" o /a\x1b[K.txt \u2191 45%"));
  EXPECT_TRUE(active("/a\x1b[K.txt"));
}

TEST_F(ItemChangesTest, removedColourSequenceMayLeaveAnother) {
  EXPECT_TRUE(line(" o /a\x1b[\x1b[0m1m.txt \u2191 1%"));
  EXPECT_TRUE(active("/a\x1b[1m.txt"));
}

TEST_F(ItemChangesTest, carriageReturnsAreRemovedFromBothEndsOnly) {
  EXPECT_TRUE(line("\r\r o /a\rb.txt \u2191 45%\r\r"));
  ASSERT_TRUE(active("/a\rb.txt"));
  EXPECT_EQ(onlyLogLine(), "Driftmark: uploading a\rb.txt");
}

TEST_F(ItemChangesTest, carriageReturnsAfterColoursCountAsTrailing) {
  item("/a.txt", " \u2191 1%");
  EXPECT_EQ(print("\x1b[1m\r\x1b[0m o /a.txt\r\x1b[0m\r\n"), 1);
  EXPECT_FALSE(active("/a.txt"));
  EXPECT_EQ(latest().path, full("/a.txt"));
}

TEST_F(ItemChangesTest, spacesAtTheEndDoNotHideTheBareCloud) {
  item("/a.txt", " \u2191 1%");
  EXPECT_TRUE(item("/a.txt", " \u2601 \t "));
  EXPECT_FALSE(active("/a.txt"));
}

TEST_F(ItemChangesTest, carriageReturnBeforeATrailingSpaceBelongsToTheState) {
  item("/a.txt", " \u2191 1%");
  takeLog();
  EXPECT_FALSE(item("/a.txt", " \u2601\r "));
  EXPECT_TRUE(active("/a.txt"));
  EXPECT_EQ(onlyLogLine(), "Driftmark: unrecognized state \"\r\" for a.txt");
}

// ---- item lines only ----

TEST_F(ItemChangesTest, linesWithoutTheItemPrefixAreIgnored) {
  for (const std::string& text :
       {""s, " "s, "o /x \u2601"s, " o x \u2601"s, "  o /x \u2191 1%"s, " O /x \u2191 1%"s,
        " o  /x \u2191 1%"s, "\to /x \u2191 1%"s, " o"s, " o "s, " i /x \u2191 1%"s,
        " o\\/x \u2191 1%"s, "----------"s, "x o /x \u2191 1%"s, "0 o /x \u2191 1%"s,
        "/x \u2191 1%"s})
    EXPECT_FALSE(line(text)) << text;
  expectNothingHappened();
  EXPECT_EQ(monitor->tally().itemLines, 0U);
}

TEST_F(ItemChangesTest, itemPrefixInsideAPathIsPartOfThePath) {
  EXPECT_TRUE(line(" o /a o /b.txt \u2191 1%"));
  EXPECT_TRUE(active("/a o /b.txt"));
}

// ---- splitting ----

TEST_F(ItemChangesTest, uploadSeparatorIsTriedBeforeTheCloud) {
  EXPECT_TRUE(line(" o /p \u2601 x \u2191 1%"));
  ASSERT_TRUE(active("/p \u2601 x"));
  EXPECT_EQ(transfer("/p \u2601 x").direction, Direction::upload);
  EXPECT_EQ(onlyLogLine(), "Driftmark: uploading p \u2601 x");
}

TEST_F(ItemChangesTest, firstOfSeveralSeparatorsSplits) {
  EXPECT_TRUE(line(" o /a \u2191 b \u2191 7%"));
  EXPECT_TRUE(active("/a"));
  EXPECT_TRUE(line(" o /b \u2601 \u2601 \u2193 7%"));
  EXPECT_TRUE(active("/b"));
}

TEST_F(ItemChangesTest, cloudNeedsASpaceOnlyBeforeIt) {
  EXPECT_TRUE(line(" o /a.txt \u2601\u219350%"));
  ASSERT_TRUE(active("/a.txt"));
  EXPECT_EQ(transfer("/a.txt").direction, Direction::download);
  EXPECT_EQ(transfer("/a.txt").percent, 50.0);
}

TEST_F(ItemChangesTest, cloudInsideANameWithoutSpaceDoesNotSplit) {
  EXPECT_TRUE(line(" o /my\u2601.txt \u2601 \u2193 50%"));
  EXPECT_TRUE(active("/my\u2601.txt"));
}

TEST_F(ItemChangesTest, arrowWithoutBothSpacesDoesNotSplit) {
  EXPECT_TRUE(line(" o /a\u2191b.txt \u2191 1%"));
  EXPECT_TRUE(active("/a\u2191b.txt"));
  EXPECT_FALSE(line(" o /c.txt \u2191"));
  EXPECT_FALSE(active("/c.txt"));
  EXPECT_TRUE(line(" o /c.txt \u2191 \u2601")) << "this arrow has both spaces";
  EXPECT_TRUE(active("/c.txt"));
}

TEST_F(ItemChangesTest, downArrowAloneDoesNotSplit) {
  EXPECT_FALSE(line(" o /a.txt \u2193 5%"));
  EXPECT_TRUE(monitor->active().empty());
  EXPECT_TRUE(isKnownCurrent("/a.txt \u2193 5%"));
}

TEST_F(ItemChangesTest, separatorAfterTheFirstSlashLeavesTheRootAsPath) {
  EXPECT_TRUE(line(" o / \u2191 5%"));
  EXPECT_TRUE(active("/"));
  EXPECT_EQ(onlyLogLine(), "Driftmark: uploading /");
}

TEST_F(ItemChangesTest, otherSymbolsOfTheSameBlocksDoNotSplit) {
  EXPECT_FALSE(line(" o /a.txt \u2602 \u2192 \u2190 \u2600 5%"));
  EXPECT_TRUE(isKnownCurrent("/a.txt \u2602 \u2192 \u2190 \u2600 5%"));
}

// ---- names ----

TEST_F(ItemChangesTest, nameIsTheLastComponent) {
  item(docs + "/deep/er/report final.pdf", " \u2191 1%");
  EXPECT_EQ(onlyLogLine(), "Driftmark: uploading report final.pdf");
}

TEST_F(ItemChangesTest, trailingSlashesDoNotCountForTheNameButForThePath) {
  EXPECT_TRUE(item("/folder//", " \u2191 1%"));
  EXPECT_EQ(onlyLogLine(), "Driftmark: uploading folder");
  EXPECT_TRUE(active("/folder//"));
  EXPECT_FALSE(active("/folder"));
}

TEST_F(ItemChangesTest, pathsAreComparedByteForByte) {
  const std::string composed = "/caf\u00e9.txt";
  const std::string decomposed = "/cafe\u0301.txt";
  for (const std::string& path :
       {composed, decomposed, "/A.txt"s, "/a.txt"s, "/x//y"s, "/x/y"s, "/x/y/"s})
    EXPECT_TRUE(item(path, " \u2191 1%")) << path;
  EXPECT_EQ(monitor->active().size(), 7U);
  EXPECT_EQ(takeLog().size(), 7U);
  item(composed, cloud);
  EXPECT_FALSE(active(composed));
  EXPECT_TRUE(active(decomposed));
  EXPECT_FALSE(isKnownCurrent(decomposed));
  EXPECT_TRUE(isKnownCurrent(composed));
}

TEST_F(ItemChangesTest, namesInAnyScriptAreLoggedUnchanged) {
  item("/\u5199\u771f \U0001f468\u200d\U0001f469\u200d\U0001f467/e\u0301t\u00e9 \U0001f4c4.txt",
       " \u2191 1%");
  EXPECT_EQ(onlyLogLine(), "Driftmark: uploading e\u0301t\u00e9 \U0001f4c4.txt");
}

TEST_F(ItemChangesTest, nulIsACharacterLikeAnother) {
  EXPECT_TRUE(line(" o /a\0b.txt \u2191 5%"s));
  EXPECT_TRUE(active("/a\0b.txt"s));
  EXPECT_FALSE(active("/a"));
  EXPECT_EQ(onlyLogLine(), "Driftmark: uploading a\0b.txt"s);
  EXPECT_FALSE(line("\0 o /c.txt \u2191 5%"s));
}

// ---- ignored items ----

TEST_F(ItemChangesTest, hiddenFilesAreIgnored) {
  EXPECT_FALSE(item(docs + "/.DS_Store", cloud));
  EXPECT_FALSE(item(docs + "/.hidden.txt", " \u2191 5%"));
  EXPECT_FALSE(item(docs + "/.hidden/", " \u2601 \u2193 5%"));
  EXPECT_FALSE(item(docs + "/.hidden.txt", " \u2601 Upload Error 28"));
  EXPECT_FALSE(item(docs + "/.DS_Store", notDownloaded));
  expectNothingHappened();
}

TEST_F(ItemChangesTest, itemsInTheTrashAreIgnored) {
  EXPECT_FALSE(line(" o " + docs + "/.Trash/x \u2193 3%"));
  EXPECT_FALSE(item(docs + "/.Trash/x", " \u2191 3%"));
  EXPECT_FALSE(item(docs + "/.Trashes/f", cloud));
  EXPECT_FALSE(item(docs + "/.Trashes/f", notDownloaded));
  EXPECT_FALSE(item(docs + "/a/.Trash-501/b/c", " \u2601 Upload Error 28"));
  expectNothingHappened();
}

TEST_F(ItemChangesTest, onlyTheLastComponentMakesAFileHidden) {
  EXPECT_TRUE(item(docs + "/.cache/f.bin", " \u2601 \u2193 5%"));
  EXPECT_TRUE(active(docs + "/.cache/f.bin"));
  EXPECT_FALSE(line(" o " + docs + "/.cache/g.bin \u2193 5%"));
  EXPECT_TRUE(isKnownCurrent(docs + "/.cache/g.bin \u2193 5%"));
}

TEST_F(ItemChangesTest, trashMarkerIsCaseSensitiveAndNeedsItsSlash) {
  EXPECT_TRUE(item("/x.Trash/a.txt", " \u2191 1%"));
  EXPECT_TRUE(item("/.trash/a.txt", " \u2191 1%"));
  EXPECT_EQ(monitor->active().size(), 2U);
}

TEST_F(ItemChangesTest, trashMarkerAfterThePathDoesNotCount) {
  EXPECT_TRUE(item("/a.txt", " \u2191 1% /.Trash"));
  EXPECT_TRUE(active("/a.txt"));
}

// ---- direction and percentage ----

TEST_F(ItemChangesTest, downloadLineWithoutPercentageMakesItAbsentAndRefreshes) {
  EXPECT_TRUE(item(docs + "/b.mov", " \u2601 \u2193 12.5%"));
  ASSERT_TRUE(active(docs + "/b.mov"));
  EXPECT_EQ(transfer(docs + "/b.mov").direction, Direction::download);
  EXPECT_EQ(transfer(docs + "/b.mov").percent, 12.5);
  EXPECT_EQ(onlyLogLine(), "Driftmark: downloading b.mov");

  platform.clock.jump(Seconds(2));
  EXPECT_TRUE(item(docs + "/b.mov", " \u2601 \u2193"));
  EXPECT_EQ(transfer(docs + "/b.mov").percent, std::nullopt);
  EXPECT_EQ(transfer(docs + "/b.mov").lastUpdate, now());
  EXPECT_EQ(takeLog(), Lines{});
}

TEST_F(ItemChangesTest, everyProgressLineRefreshesEvenWithoutProgress) {
  item("/a.txt", " \u2191 10%");
  platform.clock.jump(Seconds(7));
  EXPECT_TRUE(item("/a.txt", " \u2191 10%"));
  EXPECT_EQ(transfer("/a.txt").lastUpdate, now());
}

TEST_F(ItemChangesTest, lineWithBothArrowsIsAnUpload) {
  EXPECT_TRUE(item("/a.txt", " \u2601 \u2193\u2191 5%"));
  EXPECT_EQ(transfer("/a.txt").direction, Direction::upload);
}

TEST_F(ItemChangesTest, laterLineDecidesTheDirectionWithoutLoggingAgain) {
  item("/a.txt", " \u2191 10%");
  takeLog();
  EXPECT_TRUE(item("/a.txt", " \u2601 \u2193 20%"));
  EXPECT_EQ(transfer("/a.txt").direction, Direction::download);
  EXPECT_EQ(monitor->active().size(), 1U);
  EXPECT_EQ(takeLog(), Lines{});
}

TEST_F(ItemChangesTest, transferThatStartsAgainIsLoggedAgain) {
  item("/a.txt", " \u2191 10%");
  item("/a.txt", cloud);
  takeLog();
  item("/a.txt", " \u2191 10%");
  EXPECT_EQ(onlyLogLine(), "Driftmark: uploading a.txt");
}

TEST_F(ItemChangesTest, percentageIsTheFirstOfTheRemainder) {
  const std::vector<std::pair<std::string, std::optional<double>>> cases{
      {" \u2191 45%", 45.0},
      {" \u2191 45.25%", 45.25},
      {" \u2191 0%", 0.0},
      {" \u2191 100%", 100.0},
      {" \u2191 250%", 250.0},
      {" \u2191 007%", 7.0},
      {" \u2191 (3 of 9) 33.3% then 66.6%", 33.3},
      {" \u2191 12.5.7%", 5.7},
      {" \u2191 .5%", 5.0},
      {" \u2191 -5%", 5.0},
      {" \u2191 1,5%", 5.0},
      {" \u2191 1e2%", 2.0},
      {" \u2191 %5%", 5.0},
      {" \u2191 5.%", std::nullopt},
      {" \u2191 5 %", std::nullopt},
      {" \u2191 %", std::nullopt},
      {" \u2191 five%", std::nullopt},
      {" \u2191 5\uff05", std::nullopt},
      {" \u2191 \u0665%", std::nullopt},
      {" \u2191 5", std::nullopt},
  };
  for (const auto& [remainder, percent] : cases) {
    item("/p.txt", " \u2191 99%");
    EXPECT_TRUE(item("/p.txt", remainder));
    EXPECT_EQ(transfer("/p.txt").percent, percent) << remainder;
  }
}

TEST_F(ItemChangesTest, percentageInsideThePathDoesNotCount) {
  EXPECT_TRUE(item("/50%/60%.txt", " \u2601 \u2193"));
  EXPECT_EQ(transfer("/50%/60%.txt").percent, std::nullopt);
}

TEST_F(ItemChangesTest, percentageOfManyDigitsIsReadAsFarAsItConverts) {
  EXPECT_TRUE(item("/a.txt", " \u2191 33.33333333333333333333333333333333%"));
  ASSERT_TRUE(transfer("/a.txt").percent);
  EXPECT_DOUBLE_EQ(*transfer("/a.txt").percent, 100.0 / 3);
}

TEST_F(ItemChangesTest, progressLineClearsAnIssue) {
  item("/a.txt", " \u2601 Upload Error 28");
  ASSERT_EQ(issue("/a.txt"), "Upload Error 28");
  takeLog();
  EXPECT_TRUE(item("/a.txt", " \u2191 1%"));
  EXPECT_TRUE(monitor->issues().empty());
  EXPECT_EQ(onlyLogLine(), "Driftmark: uploading a.txt");
}

TEST_F(ItemChangesTest, progressLineClearsNoOtherIssue) {
  item("/a.txt", " \u2601 Upload Error 28");
  item("/b.txt", " \u2191 1%");
  EXPECT_EQ(issue("/a.txt"), "Upload Error 28");
}

// ---- in sync ----

TEST_F(ItemChangesTest, bareCloudCompletesATransfer) {
  item(docs + "/b.mov", " \u2601 \u2193 12.5%");
  takeLog();
  EXPECT_TRUE(item(docs + "/b.mov", cloud));
  EXPECT_TRUE(monitor->active().empty());
  ASSERT_EQ(monitor->recent().size(), 1U);
  EXPECT_EQ(latest().path, full(docs + "/b.mov"));
  EXPECT_EQ(latest().kind, RecentKind::download);
  EXPECT_EQ(latest().date, now());
  EXPECT_EQ(onlyLogLine(), "Driftmark: synced b.mov (download)");

  EXPECT_FALSE(item(docs + "/b.mov", cloud));
  EXPECT_EQ(monitor->recent().size(), 1U);
  EXPECT_EQ(takeLog(), Lines{});
}

TEST_F(ItemChangesTest, lineWithoutSeparatorCompletesATransfer) {
  item(docs + "/f.txt", " \u2191 99%");
  takeLog();
  EXPECT_TRUE(item(docs + "/f.txt", ""));
  EXPECT_TRUE(monitor->active().empty());
  EXPECT_EQ(onlyLogLine(), "Driftmark: synced f.txt (upload)");
}

TEST_F(ItemChangesTest, stateLineOfAnIdleItemOnlySetsItsKnownState) {
  EXPECT_FALSE(item("/a.txt", cloud));
  EXPECT_FALSE(item("/b.txt", ""));
  expectNothingHappened();
  EXPECT_TRUE(isKnownCurrent("/a.txt"));
  EXPECT_TRUE(isKnownCurrent("/b.txt"));
}

TEST_F(ItemChangesTest, completedTransferIsKnownAsCurrent) {
  item("/a.txt", " \u2191 99%");
  item("/a.txt", cloud);
  EXPECT_TRUE(isKnownCurrent("/a.txt"));
  EXPECT_EQ(monitor->recent().size(), 1U);
}

TEST_F(ItemChangesTest, stateLineThatClearsAnIssueIsAChange) {
  item("/a.txt", " \u2601 Upload Error 28");
  takeLog();
  EXPECT_TRUE(item("/a.txt", cloud));
  EXPECT_TRUE(monitor->issues().empty());
  EXPECT_FALSE(item("/a.txt", cloud));
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_TRUE(monitor->recent().empty());
}

// ---- not downloaded ----

TEST_F(ItemChangesTest, firstNotDownloadedLineOfAPathIsNoEvent) {
  EXPECT_FALSE(item(docs + "/c.txt", notDownloaded));
  EXPECT_FALSE(item(docs + "/c.txt", notDownloaded));
  expectNothingHappened();
}

TEST_F(ItemChangesTest, itemSeenInSyncAndThenNotDownloadedIsEvicted) {
  item(docs + "/c.txt", notDownloaded);
  item(docs + "/c.txt", cloud);
  EXPECT_TRUE(item(docs + "/c.txt", notDownloaded));
  ASSERT_EQ(monitor->recent().size(), 1U);
  EXPECT_EQ(latest().path, full(docs + "/c.txt"));
  EXPECT_EQ(latest().kind, RecentKind::evicted);
  EXPECT_EQ(latest().date, now());
  EXPECT_EQ(onlyLogLine(), "Driftmark: evicted c.txt");

  EXPECT_FALSE(item(docs + "/c.txt", notDownloaded));
  EXPECT_EQ(monitor->recent().size(), 1U);
  EXPECT_EQ(takeLog(), Lines{});
}

TEST_F(ItemChangesTest, evictionIsReportedAgainAfterTheItemWasInSyncAgain) {
  for (int round = 0; round < 3; ++round) {
    item("/c.txt", cloud);
    EXPECT_TRUE(item("/c.txt", notDownloaded));
  }
  EXPECT_EQ(takeLog(), Lines(3, "Driftmark: evicted c.txt"));
  EXPECT_EQ(monitor->recent().size(), 1U);
}

TEST_F(ItemChangesTest, markerCountsAnywhereInTheState) {
  item("/c.txt", cloud);
  EXPECT_TRUE(item("/c.txt", " \u2601 (error: not downloaded, 12 KB)"));
  EXPECT_EQ(latest().kind, RecentKind::evicted);
  EXPECT_TRUE(monitor->issues().empty());
  EXPECT_EQ(onlyLogLine(), "Driftmark: evicted c.txt");
}

TEST_F(ItemChangesTest, markerIsCaseSensitive) {
  item("/c.txt", cloud);
  EXPECT_FALSE(item("/c.txt", " \u2601 Not Downloaded"));
  EXPECT_EQ(onlyLogLine(), "Driftmark: unrecognized state \"Not Downloaded\" for c.txt");
  EXPECT_TRUE(monitor->recent().empty());
}

TEST_F(ItemChangesTest, markerInThePathDoesNotCount) {
  EXPECT_FALSE(item("/not downloaded.txt", cloud));
  EXPECT_TRUE(isKnownCurrent("/not downloaded.txt"));
}

TEST_F(ItemChangesTest, notDownloadedLineCancelsADownload) {
  item("/c.txt", " \u2601 \u2193 5%");
  takeLog();
  EXPECT_TRUE(item("/c.txt", notDownloaded));
  EXPECT_TRUE(monitor->active().empty());
  EXPECT_TRUE(monitor->recent().empty());
  EXPECT_EQ(onlyLogLine(), "Driftmark: download cancelled c.txt");
  EXPECT_EQ(monitor->overall(), OverallState::idle);
  EXPECT_FALSE(isKnownCurrent("/c.txt"));
}

TEST_F(ItemChangesTest, notDownloadedLineOfAnUploadIsLoggedAsCancelledToo) {
  item("/c.txt", cloud);
  item("/c.txt", " \u2191 5%");
  takeLog();
  EXPECT_TRUE(item("/c.txt", notDownloaded));
  EXPECT_TRUE(monitor->active().empty());
  EXPECT_TRUE(monitor->recent().empty());
  EXPECT_EQ(onlyLogLine(), "Driftmark: download cancelled c.txt");
  EXPECT_FALSE(isKnownCurrent("/c.txt"));
}

TEST_F(ItemChangesTest, itemInSyncAfterACancelledDownloadIsKnownAsCurrent) {
  item("/c.txt", " \u2601 \u2193 5%");
  item("/c.txt", notDownloaded);
  item("/c.txt", cloud);
  EXPECT_TRUE(isKnownCurrent("/c.txt"));
}

TEST_F(ItemChangesTest, notDownloadedLineThatClearsAnIssueIsAChange) {
  item("/c.txt", " \u2601 conflict");
  takeLog();
  EXPECT_TRUE(item("/c.txt", notDownloaded));
  EXPECT_TRUE(monitor->issues().empty());
  EXPECT_TRUE(monitor->recent().empty());
  EXPECT_EQ(takeLog(), Lines{});
}

// ---- unrecognized states and issues ----

TEST_F(ItemChangesTest, errorStateIsLoggedOnceAsUnrecognizedAndOnceAsIssue) {
  EXPECT_TRUE(item(docs + "/d.txt", " \u2601 Upload Error 28"));
  EXPECT_EQ(issue(docs + "/d.txt"), "Upload Error 28");
  EXPECT_EQ(takeLog(), (Lines{"Driftmark: unrecognized state \"Upload Error 28\" for d.txt",
                              "Driftmark: sync issue on d.txt: Upload Error 28"}));
  EXPECT_FALSE(item(docs + "/d.txt", " \u2601 Upload Error 28"));
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_EQ(monitor->issues().size(), 1U);
}

TEST_F(ItemChangesTest, waitingStateIsLoggedTheFirstTimeAnyPathShowsIt) {
  EXPECT_FALSE(item(docs + "/e.txt", " \u2601 waiting"));
  EXPECT_EQ(onlyLogLine(), "Driftmark: unrecognized state \"waiting\" for e.txt");
  EXPECT_FALSE(item(docs + "/e.txt", " \u2601 waiting"));
  EXPECT_FALSE(item(docs + "/other.txt", " \u2601 waiting"));
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_TRUE(monitor->issues().empty());
}

TEST_F(ItemChangesTest, stateTextIsTheTrimmedTextAfterTheCloud) {
  item("/a", " \u2601\t \t one");
  item("/b", " \u2601two \t");
  item("/c", " \u2601  three  words  ");
  item("/d", " \u2601 \u2601");
  item("/e", " \u2601 four \u2601");
  EXPECT_EQ(takeLog(), (Lines{"Driftmark: unrecognized state \"one\" for a",
                              "Driftmark: unrecognized state \"two\" for b",
                              "Driftmark: unrecognized state \"three  words\" for c",
                              "Driftmark: unrecognized state \"\u2601\" for d",
                              "Driftmark: unrecognized state \"four \u2601\" for e"}));
}

TEST_F(ItemChangesTest, stateTextsAreComparedWithoutTheirMarkAndSpaces) {
  EXPECT_FALSE(item("/a", " \u2601 one"));
  EXPECT_FALSE(item("/a", " \u2601one"));
  EXPECT_FALSE(item("/a", " \u2601\tone "));
  EXPECT_EQ(takeLog().size(), 1U);
  EXPECT_TRUE(item("/b", " \u2601 error"));
  EXPECT_FALSE(item("/b", " \u2601error\t"));
  EXPECT_EQ(takeLog().size(), 2U);
}

TEST_F(ItemChangesTest, stateTextsThatDifferInTheirBytesAreDistinct) {
  item("/a", " \u2601 caf\u00e9");
  item("/a", " \u2601 cafe\u0301");
  item("/a", " \u2601 Caf\u00e9");
  EXPECT_EQ(takeLog().size(), 3U);
}

TEST_F(ItemChangesTest, issueWordsAreFoundInAnyCaseInsideOtherWords) {
  const std::vector<std::string> states{"ERROR", "Uploaderrors", "ConflictED copy", "CONFLICT",
                                        "eRRoR and conflict"};
  for (const std::string& state : states) {
    EXPECT_TRUE(item("/a.txt", " \u2601 " + state)) << state;
    EXPECT_EQ(issue("/a.txt"), state);
  }
  EXPECT_FALSE(item("/b.txt", " \u2601 err or con flict \u2601"));
  EXPECT_FALSE(item("/b.txt", " \u2601 \uff25rror"));
  EXPECT_EQ(issue("/b.txt"), "");
}

TEST_F(ItemChangesTest, issueWithAnotherTextReplacesTheOldOne) {
  item("/a.txt", " \u2601 Upload Error 28");
  takeLog();
  EXPECT_TRUE(item("/a.txt", " \u2601 Upload Error 29"));
  EXPECT_EQ(issue("/a.txt"), "Upload Error 29");
  EXPECT_TRUE(item("/a.txt", " \u2601 Upload Error 28"));
  EXPECT_EQ(takeLog(), (Lines{"Driftmark: unrecognized state \"Upload Error 29\" for a.txt",
                              "Driftmark: sync issue on a.txt: Upload Error 29",
                              "Driftmark: sync issue on a.txt: Upload Error 28"}));
  EXPECT_EQ(monitor->issues().size(), 1U);
}

TEST_F(ItemChangesTest, sameStateIsAnIssueOfEveryPathThatShowsIt) {
  EXPECT_TRUE(item("/a.txt", " \u2601 conflict"));
  EXPECT_TRUE(item("/b.txt", " \u2601 conflict"));
  EXPECT_EQ(takeLog(), (Lines{"Driftmark: unrecognized state \"conflict\" for a.txt",
                              "Driftmark: sync issue on a.txt: conflict",
                              "Driftmark: sync issue on b.txt: conflict"}));
  EXPECT_EQ(monitor->issues().size(), 2U);
}

TEST_F(ItemChangesTest, clearedIssueThatReturnsIsLoggedOnlyAsIssue) {
  item("/a.txt", " \u2601 conflict");
  item("/a.txt", cloud);
  takeLog();
  EXPECT_TRUE(item("/a.txt", " \u2601 conflict"));
  EXPECT_EQ(onlyLogLine(), "Driftmark: sync issue on a.txt: conflict");
}

TEST_F(ItemChangesTest, unrecognizedStateDoesNotChangeAnActiveTransfer) {
  item("/a.txt", " \u2191 30%");
  const Date updated = now();
  platform.clock.jump(Seconds(5));
  EXPECT_FALSE(item("/a.txt", " \u2601 waiting"));
  ASSERT_TRUE(active("/a.txt"));
  EXPECT_EQ(transfer("/a.txt").percent, 30.0);
  EXPECT_EQ(transfer("/a.txt").lastUpdate, updated);
}

TEST_F(ItemChangesTest, issueDoesNotChangeAnActiveTransfer) {
  item("/a.txt", " \u2191 30%");
  const Date updated = now();
  platform.clock.jump(Seconds(5));
  EXPECT_TRUE(item("/a.txt", " \u2601 Upload Error 28"));
  ASSERT_TRUE(active("/a.txt"));
  EXPECT_EQ(transfer("/a.txt").lastUpdate, updated);
  EXPECT_EQ(issue("/a.txt"), "Upload Error 28");
}

TEST_F(ItemChangesTest, unrecognizedStateThatIsNoIssueKeepsTheIssue) {
  item("/a.txt", " \u2601 Upload Error 28");
  EXPECT_FALSE(item("/a.txt", " \u2601 waiting"));
  EXPECT_EQ(issue("/a.txt"), "Upload Error 28");
}

TEST_F(ItemChangesTest, unrecognizedStateDoesNotChangeTheKnownState) {
  item("/a.txt", " \u2601 waiting");
  EXPECT_FALSE(isKnownCurrent("/a.txt"));
  item("/b.txt", cloud);
  item("/b.txt", " \u2601 waiting");
  EXPECT_TRUE(isKnownCurrent("/b.txt"));
}

TEST_F(ItemChangesTest, progressLineDoesNotChangeTheKnownState) {
  item("/a.txt", cloud);
  item("/a.txt", " \u2191 5%");
  platform.mainQueue.advance(Seconds(30));
  ASSERT_FALSE(active("/a.txt"));
  EXPECT_TRUE(isKnownCurrent("/a.txt"));
}

TEST_F(ItemChangesTest, statesAreRememberedAcrossARestartOfBrctl) {
  item("/a.txt", " \u2601 waiting");
  item("/b.txt", cloud);
  items().exit();
  advance(10);
  takeLog();
  EXPECT_FALSE(item("/a.txt", " \u2601 waiting"));
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_TRUE(isKnownCurrent("/b.txt"));
}

TEST_F(ItemChangesTest, knownStatesOfManyPathsAreKeptApart) {
  constexpr int count = 5000;
  std::string listing;
  for (int number = 0; number < count; ++number)
    listing += " o /folder " + std::to_string(number % 70) + "/file " + std::to_string(number) +
               (number % 3 == 0 ? notDownloaded : cloud) + "\r\n";
  EXPECT_EQ(print(listing), 0);
  for (int number = 0; number < count; ++number)
    EXPECT_EQ(isKnownCurrent("/folder " + std::to_string(number % 70) + "/file " +
                             std::to_string(number)),
              number % 3 != 0)
        << number;
}

// ---- diagnosis ----

TEST_F(ItemChangesTest, tallyCountsLinesAndTheirEffects) {
  print("header\r\n"
        " o /a.txt \u2191 1%\r\n"
        " o /a.txt \u2191 2%\r\n"
        " o /a.txt \u2601\r\n"
        " o /b.txt \u2601 \u2193 1%\r\n"
        " o /b.txt \u2601 not downloaded\r\n"
        " o /a.txt \u2601 not downloaded\r\n"
        " o /c\xff.txt \u2601\r\n"
        " o /.hidden \u2601\r\n"
        " o /c.txt \u2601 waiting\r\n"
        " o /c.txt \u2601 waiting\r\n"
        " o /c.txt \u2601 Upload Error 28\r\n"
        " o /c.txt \u2601 Upload Error 28\r\n"
        " o /unfinished");
  const MonitorTally tally = monitor->tally();
  EXPECT_EQ(tally.lines, 13U);
  EXPECT_EQ(tally.invalidLines, 1U);
  EXPECT_EQ(tally.itemLines, 11U);
  EXPECT_EQ(tally.transfersStarted, 2U);
  EXPECT_EQ(tally.transfersFinished, 1U);
  EXPECT_EQ(tally.evictions, 1U);
  EXPECT_EQ(tally.downloadsCancelled, 1U);
  EXPECT_EQ(tally.issuesRaised, 1U);
  EXPECT_EQ(tally.unrecognizedStates, 2U);
}

} // namespace
} // namespace driftmark::test
