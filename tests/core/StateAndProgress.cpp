#include "core/MonitorTest.h"

#include <string>

namespace driftmark::test {
namespace {

const std::string cloud = " \u2601";

class StateAndProgressTest : public MonitorTest {
protected:
  void SetUp() override {
    platform.fileSystem.pretendEverythingExists();
    start();
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

  void holdUpload() { completeUpload("/held.txt"); }

  void raiseIssue() { item("/broken.txt", " \u2601 Upload Error 28"); }
};

// ---- precedence ----

TEST_F(StateAndProgressTest, monitorWithoutActivityIsIdle) {
  EXPECT_EQ(monitor->overall(), OverallState::idle);
  EXPECT_EQ(monitor->progress(), std::nullopt);
  EXPECT_EQ(monitor->longestStall(), std::nullopt);
  EXPECT_FALSE(monitor->shouldOfferRestart());
}

TEST_F(StateAndProgressTest, liveTransfersShowTheirDirections) {
  startUpload("/a");
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  startUpload("/b");
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  startDownload("/c");
  EXPECT_EQ(monitor->overall(), OverallState::both);
  item("/a", cloud);
  item("/b", cloud);
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
}

TEST_F(StateAndProgressTest, stalledUploadBesideALiveDownloadIsDownloading) {
  startUpload("/a");
  jump(301);
  startDownload("/b");
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
}

TEST_F(StateAndProgressTest, stalledDownloadBesideALiveUploadIsUploading) {
  startDownload("/a");
  jump(301);
  startUpload("/b");
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
}

TEST_F(StateAndProgressTest, stalledTransfersAloneAreAttentionWhateverStatusConfirms) {
  confirm(0, 2);
  startUpload("/a");
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  jump(301);
  ASSERT_TRUE(monitor->issues().empty());
  ASSERT_EQ(monitor->statusActivity().value().uploads, 2);
  EXPECT_EQ(monitor->overall(), OverallState::attention);
}

TEST_F(StateAndProgressTest, stalledTransferOutranksAHold) {
  startUpload("/a");
  jump(301);
  holdUpload();
  EXPECT_EQ(monitor->overall(), OverallState::attention);
}

TEST_F(StateAndProgressTest, updateMakesAStalledTransferLiveAgain) {
  startUpload("/a");
  jump(301);
  ASSERT_EQ(monitor->overall(), OverallState::attention);
  startUpload("/a");
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
}

TEST_F(StateAndProgressTest, liveTransferOutranksAnIssue) {
  raiseIssue();
  startUpload("/a");
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
}

TEST_F(StateAndProgressTest, issueIsAttentionWhenNothingIsLive) {
  raiseIssue();
  EXPECT_EQ(monitor->overall(), OverallState::attention);
  item("/broken.txt", cloud);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
}

TEST_F(StateAndProgressTest, issueOutranksHoldStatusAndGlobalFeed) {
  confirm(1, 1);
  holdUpload();
  global(fraction("0.5", "4096"));
  raiseIssue();
  EXPECT_EQ(monitor->overall(), OverallState::attention);
}

TEST_F(StateAndProgressTest, holdOutranksTheStatusConfirmation) {
  confirm(1, 0);
  ASSERT_EQ(monitor->overall(), OverallState::downloading);
  holdUpload();
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  jump(2.999);
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  jump(0.001);
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
}

TEST_F(StateAndProgressTest, heldDownloadShowsAsDownloading) {
  startDownload("/a");
  item("/a", cloud);
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
  jump(3);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
}

TEST_F(StateAndProgressTest, statusConfirmationOfDownloadsIsDownloading) {
  confirm(1, 0);
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
}

TEST_F(StateAndProgressTest, statusConfirmationOfUploadsIsUploading) {
  confirm(0, 1);
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
}

TEST_F(StateAndProgressTest, statusConfirmationOfBothIsBoth) {
  confirm(1, 1);
  EXPECT_EQ(monitor->overall(), OverallState::both);
}

TEST_F(StateAndProgressTest, statusConfirmationOutranksTheGlobalFeed) {
  confirm(1, 0);
  global(fraction("0.5", "4096"));
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
}

TEST_F(StateAndProgressTest, globalFeedAloneIsSyncing) {
  global(fraction("0.5", "4096"));
  EXPECT_EQ(monitor->overall(), OverallState::syncing);
  jump(60);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
}

// ---- progress ----

TEST_F(StateAndProgressTest, progressIsTheMeanOfLivePercentages) {
  startUpload("/a", "10%");
  EXPECT_EQ(monitor->progress(), 10.0);
  startDownload("/b", "20.5%");
  EXPECT_DOUBLE_EQ(monitor->progress().value(), 15.25);
  startUpload("/c", "90%");
  EXPECT_DOUBLE_EQ(monitor->progress().value(), 120.5 / 3);
}

TEST_F(StateAndProgressTest, liveTransferWithoutPercentageDoesNotLowerTheProgress) {
  startUpload("/a", "50%");
  startUpload("/b");
  EXPECT_EQ(monitor->progress(), 50.0);
}

TEST_F(StateAndProgressTest, progressIsAbsentWhenNoLiveTransferHasAPercentage) {
  startUpload("/a");
  startDownload("/b");
  EXPECT_EQ(monitor->overall(), OverallState::both);
  EXPECT_EQ(monitor->progress(), std::nullopt);
}

TEST_F(StateAndProgressTest, stalledTransfersDoNotCountForTheProgress) {
  startUpload("/a", "10%");
  jump(300);
  startUpload("/b", "70%");
  EXPECT_EQ(monitor->progress(), 40.0);
  jump(0.001);
  EXPECT_EQ(monitor->progress(), 70.0);
  jump(300);
  EXPECT_EQ(monitor->progress(), std::nullopt);
}

TEST_F(StateAndProgressTest, progressOfZeroIsPresent) {
  startUpload("/a", "0%");
  EXPECT_EQ(monitor->progress(), 0.0);
}

TEST_F(StateAndProgressTest, progressIsNotClamped) {
  startUpload("/a", "250%");
  EXPECT_EQ(monitor->progress(), 250.0);
}

// ---- all answers ----

TEST_F(StateAndProgressTest, answersHaveNoSideEffects) {
  startUpload("/a", "10%");
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
