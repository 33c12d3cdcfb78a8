// When the program says to the system that it is in use, and that no delay holds back what is
// shown.

#include "core/ControllerTest.h"
#include "support/LateTimers.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace driftmark::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Every file exists.
class ActivityTest : public ControllerTest {
protected:
  void SetUp() override { show(); }

  int begun() const { return platform.application.begunActivities(); }
  int running() const { return platform.application.runningActivities(); }

  /// Expects that one activity runs now, and none after `end`.
  template <class End> void expectEndBy(End end) {
    EXPECT_EQ(running(), 1);
    end();
    EXPECT_EQ(running(), 0);
    EXPECT_EQ(begun(), 1);
  }
};

TEST_F(ActivityTest, idleProgramHasNone) {
  advance(86400);
  open();
  EXPECT_EQ(begun(), 0);
}

TEST_F(ActivityTest, transfersShareOne) {
  upload("/a", "1%");
  EXPECT_EQ(running(), 1);
  upload("/a", "2%");
  download("/b");
  finish("/a");
  EXPECT_EQ(running(), 1);
  EXPECT_EQ(begun(), 1);
  EXPECT_EQ(platform.application.activityReason(), "iCloud Drive is syncing");
}

TEST_F(ActivityTest, itAddsNoTimer) {
  const auto timers = platform.mainQueue.timers();
  const auto waiting = platform.mainQueue.waiting();
  item("/a", " \u2601");
  item("/a", " \u2601 Upload Error 28");
  global(fraction("0.5", "100"));
  platform.settle();
  EXPECT_EQ(running(), 1);
  global(fraction("1.0", "100"));
  EXPECT_EQ(running(), 0);
  EXPECT_EQ(platform.mainQueue.timers(), timers);
  EXPECT_THAT(
      platform.mainQueue.waiting(),
      ElementsAre(SyncMonitor::statusPollInterval, waiting.at(0), SyncMonitor::globalExpiryDelay));
}

TEST_F(ActivityTest, itEndsWithTheHoldOfTheLastCompletion) {
  upload("/a");
  finish("/a");
  advance(2);
  download("/b");
  finish("/b");
  advance(3.05);
  expectEndBy([this] { advance(0.05); });
}

TEST_F(ActivityTest, itEndsWithTheLineThatCancelsTheTransfer) {
  download("/a");
  expectEndBy([this] { item("/a", " \u2601 not downloaded"); });
}

TEST_F(ActivityTest, itEndsWithTheSweepThatDropsTheTransfer) {
  platform.fileSystem.pretendNothingExists();
  upload("/a");
  advance(29.9);
  expectEndBy([this] { advance(0.1); });
}

TEST_F(ActivityTest, itEndsWithTheExpiryOfTheGlobalTransfer) {
  global(fraction("0.5", "100"));
  advance(60.4);
  expectEndBy([this] { advance(0.1); });
}

TEST_F(ActivityTest, itEndsWithTheReportThatTheGlobalTransferFinished) {
  global(fraction("0.5", "100"));
  expectEndBy([this] { global(fraction("1.0", "100")); });
}

TEST_F(ActivityTest, itEndsWithThePollThatFindsNothing) {
  confirm("Under /A\n> upload{1} active\n");
  platform.childProcesses.script(statusReport, "");
  advance(19.9);
  platform.settle();
  expectEndBy([this] {
    advance(0.1);
    platform.settle();
  });
}

TEST_F(ActivityTest, itEndsWhenTheProgramQuits) {
  upload("/a");
  expectEndBy([this] { controller->shutdown(); });
  upload("/b");
  advance(60);
  EXPECT_EQ(begun(), 1);
}

TEST_F(ActivityTest, itEndsWithTheController) {
  upload("/a");
  expectEndBy([this] { controller.reset(); });
}

TEST_F(ActivityTest, itContinuesWhileATransferIsStalled) {
  upload("/a");
  advance(3600);
  EXPECT_EQ(statusBar().symbol().name, "exclamationmark.icloud");
  EXPECT_EQ(running(), 1);
}

TEST_F(ActivityTest, issueAloneNeedsNone) {
  item("/a", " \u2601 Upload Error 28");
  advance(60);
  EXPECT_EQ(statusBar().symbol().name, "exclamationmark.icloud");
  EXPECT_EQ(begun(), 0);
}

TEST_F(ActivityTest, nextTransferBeginsAnotherOne) {
  upload("/a");
  finish("/a");
  advance(3.1);
  EXPECT_EQ(running(), 0);
  download("/b");
  EXPECT_EQ(running(), 1);
  EXPECT_EQ(begun(), 2);
}

TEST_F(ControllerTest, activityNeedsNoStatusItem) {
  platform.statusBar.decline();
  show();
  upload("/a");
  EXPECT_EQ(platform.application.runningActivities(), 1);
}

TEST_F(ControllerTest, chunksAreShownAtTheirTimeWhileTimersAreLate) {
  LateTimers late(platform.mainQueue, Seconds(8));
  platform.fileSystem.pretendEverythingExists();
  controller = StatusItemController::make(platform.platform(late, platform.childProcesses));
  platform.settle();
  std::vector<std::string> titles;
  for (const std::string percent : {"10%", "40%", "90%"}) {
    upload("/a", percent);
    titles.push_back(statusBar().title());
    advance(1);
  }
  EXPECT_THAT(titles, ElementsAre("10%", "40%", "90%"));
  finish("/a");
  EXPECT_THAT(statusBar().title(), IsEmpty());
  advance(11.0);
  EXPECT_EQ(statusBar().symbol().name, "icloud.and.arrow.up") << "the hold ends late";
  advance(0.1);
  EXPECT_EQ(statusBar().symbol().name, "icloud");
  controller.reset();
}

} // namespace
} // namespace driftmark::test
