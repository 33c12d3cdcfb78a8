#include "core/MonitorTest.h"

#include <string>

namespace driftmark::test {
namespace {

const std::string cloud = " \u2601";

class OverallTest : public MonitorTest {
protected:
  void SetUp() override {
    platform.fileSystem.pretendEverythingExists();
    start();
  }

  void upload(const std::string& path, const std::string& percent = "") {
    item(path, " \u2191 " + percent);
  }
  void download(const std::string& path, const std::string& percent = "") {
    item(path, " \u2601 \u2193 " + percent);
  }

  /// Lets `brctl status` confirm these counts from now on.
  void confirm(int downloads, int uploads) {
    std::string report = "Under /A\n";
    for (; downloads > 0; --downloads)
      report += "> downloader{1} downloading: 1\n";
    for (; uploads > 0; --uploads)
      report += "> upload{1} active\n";
    platform.childProcesses.script(statusReport, report);
    global(fraction("0.5", "1"));
    platform.settle();
    global(fraction("1.0", "1"));
  }

  void holdUpload() {
    upload("/held.txt");
    item("/held.txt", cloud);
  }

  void raiseIssue() { item("/broken.txt", " \u2601 Upload Error 28"); }

  /// Lets time pass on the wall clock alone, so that nothing but the clock changes.
  void wait(double seconds) { platform.clock.jump(Seconds(seconds)); }
};

// ---- precedence ----

TEST_F(OverallTest, nothingAtAllIsIdle) {
  EXPECT_EQ(monitor->overall(), OverallState::idle);
  EXPECT_EQ(monitor->progress(), std::nullopt);
  EXPECT_EQ(monitor->longestStall(), std::nullopt);
  EXPECT_FALSE(monitor->shouldOfferRestart());
}

TEST_F(OverallTest, liveTransfersShowTheirDirections) {
  upload("/a");
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  upload("/b");
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  download("/c");
  EXPECT_EQ(monitor->overall(), OverallState::both);
  item("/a", cloud);
  item("/b", cloud);
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
}

TEST_F(OverallTest, stalledUploadBesideALiveDownloadIsDownloading) {
  upload("/a");
  wait(301);
  download("/b");
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
}

TEST_F(OverallTest, stalledDownloadBesideALiveUploadIsUploading) {
  download("/a");
  wait(301);
  upload("/b");
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
}

TEST_F(OverallTest, onlyStalledTransfersAreAttentionWhateverStatusConfirms) {
  confirm(0, 2);
  upload("/a");
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  wait(301);
  ASSERT_TRUE(monitor->issues().empty());
  ASSERT_EQ(monitor->statusActivity().value().uploads, 2);
  EXPECT_EQ(monitor->overall(), OverallState::attention);
}

TEST_F(OverallTest, stalledTransferOutranksAHold) {
  upload("/a");
  wait(301);
  holdUpload();
  EXPECT_EQ(monitor->overall(), OverallState::attention);
}

TEST_F(OverallTest, newsOfAStalledTransferMakeItLiveAgain) {
  upload("/a");
  wait(301);
  ASSERT_EQ(monitor->overall(), OverallState::attention);
  upload("/a");
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
}

TEST_F(OverallTest, liveTransferOutranksAnIssue) {
  raiseIssue();
  upload("/a");
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
}

TEST_F(OverallTest, issueIsAttentionWhenNothingIsLive) {
  raiseIssue();
  EXPECT_EQ(monitor->overall(), OverallState::attention);
  item("/broken.txt", cloud);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
}

TEST_F(OverallTest, issueOutranksHoldStatusAndGlobalFeed) {
  confirm(1, 1);
  holdUpload();
  global(fraction("0.5", "4096"));
  raiseIssue();
  EXPECT_EQ(monitor->overall(), OverallState::attention);
}

TEST_F(OverallTest, holdOutranksTheStatusConfirmation) {
  confirm(1, 0);
  ASSERT_EQ(monitor->overall(), OverallState::downloading);
  holdUpload();
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  wait(2.999);
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  wait(0.001);
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
}

TEST_F(OverallTest, heldDownloadShowsAsDownloading) {
  download("/a");
  item("/a", cloud);
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
  wait(3);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
}

TEST_F(OverallTest, statusConfirmationShowsItsDirections) {
  confirm(1, 0);
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
}

TEST_F(OverallTest, statusConfirmationOfUploadsIsUploading) {
  confirm(0, 1);
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
}

TEST_F(OverallTest, statusConfirmationOfBothIsBoth) {
  confirm(2, 3);
  EXPECT_EQ(monitor->overall(), OverallState::both);
}

TEST_F(OverallTest, statusConfirmationOutranksTheGlobalFeed) {
  confirm(1, 0);
  global(fraction("0.5", "4096"));
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
}

TEST_F(OverallTest, globalFeedAloneIsSyncing) {
  global(fraction("0.5", "4096"));
  EXPECT_EQ(monitor->overall(), OverallState::syncing);
  wait(60);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
}

// ---- progress ----

TEST_F(OverallTest, progressIsTheMeanOfLivePercentages) {
  upload("/a", "10%");
  EXPECT_EQ(monitor->progress(), 10.0);
  download("/b", "20.5%");
  EXPECT_DOUBLE_EQ(monitor->progress().value(), 15.25);
  upload("/c", "90%");
  EXPECT_DOUBLE_EQ(monitor->progress().value(), 120.5 / 3);
}

TEST_F(OverallTest, liveTransferWithoutPercentageDoesNotLowerTheProgress) {
  upload("/a", "50%");
  upload("/b");
  EXPECT_EQ(monitor->progress(), 50.0);
}

TEST_F(OverallTest, progressIsAbsentWhenNoLiveTransferHasAPercentage) {
  upload("/a");
  download("/b");
  EXPECT_EQ(monitor->overall(), OverallState::both);
  EXPECT_EQ(monitor->progress(), std::nullopt);
}

TEST_F(OverallTest, stalledTransfersDoNotCountForTheProgress) {
  upload("/a", "10%");
  wait(300);
  upload("/b", "70%");
  EXPECT_EQ(monitor->progress(), 40.0);
  wait(0.001);
  EXPECT_EQ(monitor->progress(), 70.0);
  wait(300);
  EXPECT_EQ(monitor->progress(), std::nullopt);
}

TEST_F(OverallTest, progressOfZeroIsPresent) {
  upload("/a", "0%");
  EXPECT_EQ(monitor->progress(), 0.0);
}

TEST_F(OverallTest, progressIsNotClamped) {
  upload("/a", "250%");
  EXPECT_EQ(monitor->progress(), 250.0);
}

// ---- stalls ----

TEST_F(OverallTest, transferIsStalledOnlyAfterMoreThanTheThreshold) {
  upload("/a");
  wait(300);
  EXPECT_FALSE(monitor->isStalled(transfer("/a")));
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  EXPECT_EQ(monitor->longestStall(), std::nullopt);
  wait(0.000001);
  EXPECT_TRUE(monitor->isStalled(transfer("/a")));
  EXPECT_EQ(monitor->overall(), OverallState::attention);
  EXPECT_TRUE(monitor->longestStall());
}

TEST_F(OverallTest, longestStallIsThatOfTheOldestNews) {
  upload("/a");
  wait(100);
  upload("/b");
  wait(250);
  EXPECT_DOUBLE_EQ(monitor->longestStall().value(), 350);
  wait(100);
  EXPECT_DOUBLE_EQ(monitor->longestStall().value(), 450);
  upload("/a");
  EXPECT_DOUBLE_EQ(monitor->longestStall().value(), 350);
  upload("/b");
  EXPECT_EQ(monitor->longestStall(), std::nullopt);
}

TEST_F(OverallTest, restartIsOfferedOnlyAfterMoreThanTwiceTheThreshold) {
  upload("/a");
  EXPECT_FALSE(monitor->shouldOfferRestart());
  wait(301);
  EXPECT_FALSE(monitor->shouldOfferRestart());
  wait(299);
  EXPECT_FALSE(monitor->shouldOfferRestart());
  wait(0.000001);
  EXPECT_TRUE(monitor->shouldOfferRestart());
}

TEST_F(OverallTest, restartIsOfferedForOneLongStallBesideLiveTransfers) {
  upload("/a");
  wait(601);
  upload("/b");
  EXPECT_TRUE(monitor->shouldOfferRestart());
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  item("/a", cloud);
  EXPECT_FALSE(monitor->shouldOfferRestart());
}

TEST_F(OverallTest, stallOfAnyItemCanBeAskedFor) {
  const ActiveItem item{.path = "/elsewhere",
                        .direction = Direction::upload,
                        .percent = std::nullopt,
                        .lastUpdate = earlier(now(), Seconds(301))};
  EXPECT_TRUE(monitor->isStalled(item));
  ActiveItem fresh = item;
  fresh.lastUpdate = now();
  EXPECT_FALSE(monitor->isStalled(fresh));
}

TEST_F(OverallTest, clockSetBackStallsNothing) {
  upload("/a");
  wait(-1000);
  EXPECT_FALSE(monitor->isStalled(transfer("/a")));
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  EXPECT_EQ(monitor->longestStall(), std::nullopt);
}

TEST_F(OverallTest, answersHaveNoSideEffects) {
  upload("/a", "10%");
  raiseIssue();
  global(fraction("0.5", "4096"));
  platform.settle();
  takeLog();
  changes = 0;
  const auto waiting = platform.mainQueue.waiting();
  for (int round = 0; round < 3; ++round) {
    monitor->overall();
    monitor->progress();
    monitor->longestStall();
    monitor->shouldOfferRestart();
    monitor->globalActivity();
  }
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_EQ(changes, 0);
  EXPECT_EQ(platform.mainQueue.waiting(), waiting);
  EXPECT_EQ(monitor->active().size(), 1U);
  EXPECT_EQ(monitor->issues().size(), 1U);
}

} // namespace
} // namespace driftmark::test
