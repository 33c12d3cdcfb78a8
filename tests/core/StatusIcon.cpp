// What the status item shows, and when it is redrawn.

#include "core/ControllerTest.h"

#include <chrono>

#include <gmock/gmock.h>

namespace driftmark::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class StatusIconTest : public ControllerTest {
protected:
  void SetUp() override { show(); }

  void expectIcon(const std::string& symbol, const std::string& title, const std::string& toolTip) {
    EXPECT_EQ(statusBar().symbol(), (Symbol{symbol, toolTip}));
    EXPECT_EQ(statusBar().title(), title);
    EXPECT_EQ(statusBar().toolTip(), toolTip);
  }
};

TEST_F(ControllerTest, freshControllerIsIdle) {
  controller = StatusItemController::make(platform.platform());
  EXPECT_THAT(platform.systemLog.lines(), testing::Contains("Driftmark: state -> idle").Times(1));
  EXPECT_EQ(platform.systemLog.lines().at(0), "Driftmark: state -> idle");
  EXPECT_EQ(statusBar().symbol(), (Symbol{"icloud", "iCloud Drive: idle"}));
  EXPECT_EQ(statusBar().title(), "");
  EXPECT_EQ(statusBar().toolTip(), "iCloud Drive: idle");
}

TEST_F(ControllerTest, monitorAndUpdateChecksAreStarted) {
  controller = StatusItemController::make(platform.platform());
  platform.settle();
  EXPECT_THAT(platform.childProcesses.children(itemMonitor), testing::SizeIs(1));
  EXPECT_THAT(platform.mainQueue.timers(),
              ElementsAre(TestMainQueue::TimerSettings{Seconds(86400), Seconds(3600)}));
}

TEST_F(ControllerTest, controllerWorksWithoutStatusItem) {
  platform.statusBar.decline();
  show();
  upload("/a", "50%");
  EXPECT_THAT(takeLog(), testing::Contains("Driftmark: state -> uploading"));
}

TEST_F(ControllerTest, shutdownEndsMonitors) {
  show();
  const auto children = platform.childProcesses.children();
  ASSERT_THAT(children, testing::SizeIs(2));
  controller->shutdown();
  for (const auto& child : children)
    EXPECT_EQ(child->terminateRequests(), 1);
  EXPECT_TRUE(statusBar().hasItem());
}

TEST_F(ControllerTest, releasedControllerDrawsNothing) {
  show();
  const auto child = platform.childProcesses.children(itemMonitor).at(0);
  child->print(" o /a \u2191 50%\r\n");
  controller.reset();
  platform.settle();
  EXPECT_FALSE(statusBar().hasItem());
  EXPECT_EQ(statusBar().title(), "");
}

TEST_F(StatusIconTest, everyStateHasSymbolAndToolTip) {
  upload("/a");
  expectIcon("icloud.and.arrow.up", "", "iCloud Drive: uploading");
  download("/b");
  expectIcon("arrow.triangle.2.circlepath.icloud", "", "iCloud Drive: syncing");
  finish("/a");
  expectIcon("icloud.and.arrow.down", "", "iCloud Drive: downloading");
  finish("/b");
  item("/c", " \u2601 Upload Error 28");
  expectIcon("exclamationmark.icloud", "", "iCloud Drive: attention needed");
}

TEST_F(StatusIconTest, finishedTransferHoldsDirectionForThreeSeconds) {
  upload("/a");
  finish("/a");
  advance(3.0);
  expectIcon("icloud.and.arrow.up", "", "iCloud Drive: uploading");
  advance(0.1);
  expectIcon("icloud", "", "iCloud Drive: idle");
}

TEST_F(StatusIconTest, syncingShowsSizeOfSingleTransfer) {
  global(fraction("0.5", "1200000"));
  expectIcon("arrow.clockwise.icloud", "", "iCloud Drive: syncing 1200000 bytes");
}

TEST_F(StatusIconTest, syncingCountsSeveralTransfers) {
  globals().print(fraction("0.5", "100") + "\r\n" + fraction("0.5", "200") + "\r\n" +
                  fraction("0.5", "300") + "\r\n");
  platform.settle();
  expectIcon("arrow.clockwise.icloud", "", "iCloud Drive: syncing 3 transfers, 600 bytes");
}

TEST_F(StatusIconTest, bothDirectionsShowNoGlobalTransfers) {
  global(fraction("0.5", "1200000"));
  upload("/a");
  download("/b");
  expectIcon("arrow.triangle.2.circlepath.icloud", "", "iCloud Drive: syncing");
}

TEST_F(StatusIconTest, syncingIsShownWithoutSizeWhenTransferExpiresDuringRedraw) {
  global(fraction("0.5", "100"));
  platform.settle();
  platform.childProcesses.script(quotaReport, "4096 bytes of quota remaining");
  platform.statusBar.open();
  platform.clock.jump(30s);
  platform.clock.tickWhenRead(20s); // the state is read at 50 s, the tooltip at 70 s
  platform.settle();
  expectIcon("arrow.clockwise.icloud", "", "iCloud Drive: syncing");
}

TEST_F(StatusIconTest, progressIsRounded) {
  upload("/a", "42.4%");
  expectIcon("icloud.and.arrow.up", "42%", "iCloud Drive: uploading 42%");
  upload("/a", "99.6%");
  expectIcon("icloud.and.arrow.up", "100%", "iCloud Drive: uploading 100%");
  upload("/a", "0.4%");
  expectIcon("icloud.and.arrow.up", "0%", "iCloud Drive: uploading 0%");
}

TEST_F(StatusIconTest, absentProgressClearsTitle) {
  upload("/a", "42%");
  upload("/a");
  expectIcon("icloud.and.arrow.up", "", "iCloud Drive: uploading");
}

TEST_F(StatusIconTest, unknownSymbolFallsBack) {
  platform.statusBar.forget("icloud.and.arrow.up");
  upload("/a");
  expectIcon("icloud", "", "iCloud Drive: uploading");
}

TEST_F(StatusIconTest, redrawInSameStateLogsNothing) {
  upload("/a", "10%");
  EXPECT_THAT(takeLog(), testing::Contains("Driftmark: state -> uploading"));
  for (int percent = 11; percent < 20; ++percent)
    upload("/a", std::to_string(percent) + "%");
  EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(StatusIconTest, eachChangeOfStateIsLogged) {
  upload("/a");
  takeLog();
  download("/b");
  item("/b", " \u2601");
  EXPECT_THAT(takeLog(),
              testing::IsSupersetOf({"Driftmark: state -> both", "Driftmark: state -> uploading"}));
}

TEST_F(StatusIconTest, lineThatChangesNothingVisibleDrawsNothing) {
  upload("/a", "50%");
  const int before = statusBar().changes();
  for (int i = 0; i < 1000; ++i) {
    item("/quiet/" + std::to_string(i), " \u2601");
    upload("/a", "50%");
  }
  EXPECT_EQ(statusBar().changes(), before);
}

} // namespace
} // namespace driftmark::test
