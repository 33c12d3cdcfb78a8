// What the menu shows, section by section.

#include "core/ControllerTest.h"

#include <gmock/gmock.h>

namespace driftmark::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

const Lines fixedItems{"---",
                       "Open iCloud Drive",
                       "Free Up Space…",
                       "---",
                       "About Driftmark",
                       "Check for Updates…",
                       "Launch at Login",
                       "Quit Driftmark"};

class StatusMenuTest : public ControllerTest {
protected:
  void SetUp() override { show(); }

  /// Opens the menu and returns its lines above the storage line.
  Lines upperPart() {
    open();
    Lines lines = menu();
    EXPECT_GE(lines.size(), fixedItems.size() + 2);
    EXPECT_THAT(Lines(lines.end() - std::ptrdiff_t(fixedItems.size()), lines.end()),
                ElementsAreArray(fixedItems));
    lines.resize(lines.size() - fixedItems.size() - 2);
    return lines;
  }

  /// Lets `seconds` pass without an update of the transfers in flight.
  void stallFor(double seconds) { platform.clock.jump(Seconds(seconds)); }
};

TEST_F(StatusMenuTest, idleMenuHasOnlyFixedItems) {
  open();
  Lines expected{"[iCloud Drive: Up to Date]", "---", "[Checking iCloud storage…]"};
  expected.insert(expected.end(), fixedItems.begin(), fixedItems.end());
  EXPECT_EQ(menu(), expected);
}

TEST_F(StatusMenuTest, headlineNamesState) {
  upload("/a");
  EXPECT_EQ(upperPart().at(0), "[iCloud Drive: Uploading…]");
  download("/b");
  EXPECT_EQ(upperPart().at(0), "[iCloud Drive: Syncing…]");
  finish("/a");
  EXPECT_EQ(upperPart().at(0), "[iCloud Drive: Downloading…]");
  finish("/b");
  global(fraction("0.5", "4096"));
  advance(10);
  EXPECT_EQ(upperPart().at(0), "[iCloud Drive: Syncing…]");
  item("/c", " \u2601 Upload Error 28");
  EXPECT_EQ(upperPart().at(0), "[iCloud Drive: Attention Needed]");
}

TEST_F(StatusMenuTest, onlyOpeningAndQuittingHaveShortcuts) {
  open();
  EXPECT_EQ(menuItem("Open iCloud Drive").keyEquivalent, "o");
  EXPECT_EQ(menuItem("Quit Driftmark").keyEquivalent, "q");
  for (const MenuItem& item : statusBar().menu())
    EXPECT_EQ(item.keyEquivalent.empty(),
              item.title != "Open iCloud Drive" && item.title != "Quit Driftmark")
        << item.title;
}

// ---- transfers ----

TEST_F(StatusMenuTest, downloadShowsRoundedPercentage) {
  download("/Reports/q3.pdf", "37.6%");
  EXPECT_THAT(upperPart(),
              ElementsAre("[iCloud Drive: Downloading…]", "---", "q3.pdf  —  downloading 38%"));
  const MenuItem& row = menuItem("q3.pdf");
  EXPECT_EQ(row.symbol, (Symbol{"arrow.down.circle", "downloading 38%"}));
  EXPECT_EQ(row.toolTip, full("/Reports/q3.pdf"));
  EXPECT_EQ(row.keyEquivalent, "");
}

TEST_F(StatusMenuTest, uploadWithoutPercentageShowsDirection) {
  upload("/a.txt");
  EXPECT_THAT(upperPart(), testing::Contains("a.txt  —  uploading"));
  EXPECT_EQ(menuItem("a.txt").symbol, (Symbol{"arrow.up.circle", "uploading"}));
}

TEST_F(StatusMenuTest, onlyFileNameMayBeShortened) {
  download("/x/a  —  b.mov", "42%");
  open();
  const MenuItem& row = menuItem("a  —  b.mov");
  EXPECT_EQ(row.title.substr(0, row.nameLength.value()), "a  —  b.mov");
  EXPECT_EQ(row.title.substr(row.nameLength.value()), "  —  downloading 42%");
  EXPECT_FALSE(menuItem("Open iCloud Drive").nameLength);
}

TEST_F(StatusMenuTest, stalledTransferIsMarked) {
  download("/q3.pdf", "37.6%");
  stallFor(301);
  EXPECT_THAT(upperPart(), ElementsAre("[iCloud Drive: Attention Needed]", "---",
                                       "q3.pdf  —  stalled · downloading 38%"));
  EXPECT_EQ(menuItem("q3.pdf").symbol,
            (Symbol{"exclamationmark.circle", "stalled · downloading 38%"}));
}

TEST_F(StatusMenuTest, fifteenMostRecentlyUpdatedTransfersAreShown) {
  for (int i = 1; i <= 20; ++i) {
    upload("/" + std::to_string(i));
    platform.clock.jump(Seconds(1));
  }
  Lines expected{"[iCloud Drive: Uploading…]", "---"};
  for (int i = 20; i > 5; --i)
    expected.push_back(std::to_string(i) + "  —  uploading");
  EXPECT_EQ(upperPart(), expected);
}

TEST_F(StatusMenuTest, namesAreShownUnchanged) {
  // NOLINTNEXTLINE(misc-misleading-bidirectional): such a name is tested
  for (const std::string name : {"a_b.txt", "R&D", " leading", "\u202eabc", "100%", "a  b"}) {
    upload("/" + name);
    open();
    EXPECT_THAT(menu(), testing::Contains(name + "  —  uploading"));
    finish("/" + name);
  }
}

// ---- restart ----

TEST_F(StatusMenuTest, longStallOffersRestart) {
  upload("/a");
  stallFor(659);
  EXPECT_THAT(upperPart(),
              ElementsAre("[iCloud Drive: Attention Needed]", "---", "a  —  stalled · uploading",
                          "Restart iCloud Sync…  —  no progress for 10 min"));
  EXPECT_EQ(menuItem("Restart").symbol, (Symbol{"arrow.clockwise.icloud", "Restart iCloud Sync"}));
  EXPECT_EQ(menuItem("Restart").keyEquivalent, "");
}

TEST_F(StatusMenuTest, shortStallOffersNoRestart) {
  upload("/a");
  stallFor(600);
  EXPECT_THAT(upperPart(), testing::Not(testing::Contains(testing::StartsWith("Restart"))));
}

TEST_F(ControllerTest, minutesOfStallAreRoundedDown) {
  platform.environment.set("DRIFTMARK_STALL_SECS", "10");
  show();
  upload("/a");
  platform.clock.jump(Seconds(59));
  open();
  EXPECT_THAT(menu(), testing::Contains("Restart iCloud Sync…  —  no progress for 0 min"));
  platform.clock.jump(Seconds(300));
  open();
  EXPECT_THAT(menu(), testing::Contains("Restart iCloud Sync…  —  no progress for 5 min"));
}

TEST_F(StatusMenuTest, restartIsOfferedOnlyWithTransferInFlight) {
  upload("/a");
  stallFor(10000);
  finish("/a");
  EXPECT_THAT(upperPart(), testing::Not(testing::Contains(testing::StartsWith("Restart"))));
}

// ---- without transfers item by item ----

TEST_F(StatusMenuTest, statusReportIsSummed) {
  confirm("Under /Photos\n> downloader{1} downloading: 1\n> downloader{2} downloading: 1\n"
          "Under /\n> upload{3} active\n");
  EXPECT_THAT(upperPart(),
              ElementsAre("[iCloud Drive: Syncing…]", "---", "[2 downloading · 1 uploading]",
                          "Photos  —  syncing", testing::EndsWith("  —  syncing")));
  const MenuItem& row = menuItem("Photos");
  EXPECT_EQ(row.symbol, (Symbol{"folder", "syncing"}));
  EXPECT_EQ(row.toolTip, "/Users/ada/Library/Mobile Documents/com~apple~CloudDocs/Photos");
}

TEST_F(StatusMenuTest, directionWithoutJobsIsOmitted) {
  confirm("Under /A\n> upload{1} active\n> upload{2} active\n> upload{3} active\n");
  EXPECT_THAT(upperPart(), testing::Contains("[3 uploading]"));
  confirm("Under /A\n> downloader{1} downloading: 1\n");
  advance(20);
  platform.settle();
  EXPECT_THAT(upperPart(), testing::Contains("[1 downloading]"));
}

TEST_F(StatusMenuTest, tenDirectoriesAreShown) {
  std::string report;
  for (int i = 1; i <= 12; ++i)
    report += "Under /" + std::to_string(i) + "\n> upload{1} active\n";
  confirm(report);
  Lines expected{"[iCloud Drive: Uploading…]", "---", "[12 uploading]"};
  for (int i = 1; i <= 10; ++i)
    expected.push_back(std::to_string(i) + "  —  syncing");
  EXPECT_EQ(upperPart(), expected);
}

TEST_F(StatusMenuTest, globalTransfersAreSummed) {
  global(fraction("0.5", "4096"));
  EXPECT_THAT(upperPart(),
              ElementsAre("[iCloud Drive: Syncing…]", "---", "[1 transfer · 4096 bytes]"));
  global(fraction("0.5", "1000"));
  EXPECT_THAT(upperPart(),
              ElementsAre("[iCloud Drive: Syncing…]", "---", "[2 transfers · 5096 bytes]"));
}

TEST_F(StatusMenuTest, statusReportReplacesGlobalTransfers) {
  confirm("Under /A\n> upload{1} active\n");
  global(fraction("0.5", "4096"));
  EXPECT_THAT(upperPart(),
              ElementsAre("[iCloud Drive: Uploading…]", "---", "[1 uploading]", "A  —  syncing"));
}

TEST_F(StatusMenuTest, transfersReplaceSummary) {
  confirm("Under /A\n> upload{1} active\n");
  download("/b");
  EXPECT_THAT(upperPart(), ElementsAre("[iCloud Drive: Downloading…]", "---", "b  —  downloading"));
}

// ---- issues ----

TEST_F(StatusMenuTest, tenIssuesAreShownInPathOrder) {
  for (const char* const name : {"b", "a", "C", "é", "aa", "B", "a b", "z", "y", "x", "w", "v"})
    item("/" + std::string(name), " \u2601 Upload Error 28");
  Lines expected{"[iCloud Drive: Attention Needed]", "---", "[[Sync Issues]]"};
  for (const char* const name : {"B", "C", "a", "a b", "aa", "b", "v", "w", "x", "y"})
    expected.push_back(std::string(name) + "  —  Upload Error 28");
  EXPECT_EQ(upperPart(), expected);
  EXPECT_EQ(menuItem("B").symbol, (Symbol{"exclamationmark.triangle", "Upload Error 28"}));
}

TEST_F(StatusMenuTest, issueTextIsTruncatedToSixtyCharacters) {
  const std::string text = "Upload Error " + std::string(87, 'x');
  item("/a", " \u2601 " + text);
  EXPECT_THAT(upperPart(), testing::Contains("a  —  " + text.substr(0, 60)));
}

// ---- recent activity ----

TEST_F(StatusMenuTest, finishedTransfersShowTime) {
  upload("/a");
  finish("/a");
  platform.clock.jump(Seconds(60));
  download("/b");
  finish("/b");
  platform.clock.jump(Seconds(120));
  EXPECT_THAT(upperPart(), ElementsAre("[iCloud Drive: Up to Date]", "---", "[[Recent Activity]]",
                                       "b  —  120 s ago", "a  —  180 s ago"));
  EXPECT_EQ(menuItem("a").symbol, (Symbol{"checkmark.circle", "180 s ago"}));
}

TEST_F(StatusMenuTest, evictionIsShownAsRemovedDownload) {
  item("/a", " \u2601");
  item("/a", " \u2601 not downloaded");
  platform.clock.jump(Seconds(120));
  EXPECT_THAT(upperPart(), testing::Contains("a  —  removed download 120 s ago"));
  EXPECT_EQ(menuItem("a").symbol, (Symbol{"icloud.slash", "removed download 120 s ago"}));
}

TEST_F(StatusMenuTest, sectionsKeepOrder) {
  upload("/done");
  finish("/done");
  item("/broken", " \u2601 Upload Error 28");
  upload("/busy");
  EXPECT_THAT(upperPart(), ElementsAre("[iCloud Drive: Uploading…]", "---", "busy  —  uploading",
                                       "---", "[[Sync Issues]]", "broken  —  Upload Error 28",
                                       "---", "[[Recent Activity]]", "done  —  0 s ago"));
}

// ---- storage ----

TEST_F(StatusMenuTest, openingRequestsQuota) {
  const std::size_t before = platform.childProcesses.runs(quotaReport).size();
  platform.statusBar.open();
  platform.settle();
  EXPECT_EQ(platform.childProcesses.runs(quotaReport).size(), before + 1);
}

TEST_F(StatusMenuTest, quotaRetitlesOnlyStorageLineOfOpenMenu) {
  platform.childProcesses.script(quotaReport, "4096 bytes of quota remaining");
  platform.statusBar.open();
  Lines expected = menu();
  EXPECT_EQ(expected.at(2), "[Checking iCloud storage…]");
  upload("/a");
  platform.settle();
  expected.at(2) = "[4096 bytes available in iCloud]";
  EXPECT_EQ(menu(), expected);
}

TEST_F(StatusMenuTest, knownQuotaIsShownAtOnce) {
  platform.childProcesses.script(quotaReport, "4096 bytes of quota remaining");
  open();
  platform.statusBar.open();
  EXPECT_EQ(menu().at(2), "[4096 bytes available in iCloud]");
}

// ---- launch at login ----

TEST_F(StatusMenuTest, checkMarkShowsLoginItemStatus) {
  for (const auto status : {LoginItem::Status::notRegistered, LoginItem::Status::requiresApproval,
                            LoginItem::Status::notFound, LoginItem::Status::enabled}) {
    platform.loginItem.setStatus(status);
    open();
    EXPECT_EQ(menuItem("Launch at Login").isChecked, status == LoginItem::Status::enabled);
  }
}

} // namespace
} // namespace driftmark::test
