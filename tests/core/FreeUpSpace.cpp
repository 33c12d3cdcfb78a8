// The dialogue of "Free Up Space…", step by step.

#include "core/ControllerTest.h"

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace driftmark::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string drive = "/Users/ada/Library/Mobile Documents/com~apple~CloudDocs";
const std::string photos = drive + "/Photos";

constexpr std::size_t removeDownloads = 0;
constexpr std::size_t cancel = 1;

class FreeUpSpaceTest : public ControllerTest {
protected:
  void SetUp() override { show(); }

  /// The paths of `count` files in `folder`.
  static std::vector<std::string> files(const std::string& folder, int count) {
    std::vector<std::string> paths;
    for (int i = 1; i <= count; ++i)
      paths.push_back(folder + "/" + std::to_string(i) + ".jpg");
    return paths;
  }

  /// Puts `count` evictable files of 4096 bytes each into `folder`.
  void fill(const std::string& folder, int count) {
    std::vector<WalkEntry> entries;
    for (const std::string& path : files(folder, count))
      entries.push_back(TestCloudFiles::downloaded(path, 4096));
    platform.cloudFiles.list(folder, std::move(entries));
  }

  /// Chooses the menu item and picks `folder`; the survey waits in the background.
  void pick(const std::string& folder) {
    platform.dialogs.choose(folder);
    open();
    platform.statusBar.choose("Free Up Space…");
  }

  std::vector<Alert> alerts() { return platform.dialogs.take(); }

  static Alert question(const std::string& name, const std::string& filesUsingBytes) {
    return {"Remove Downloads in " + name + "?",
            filesUsingBytes +
                " on this Mac will be removed from local storage. They stay in iCloud and download "
                "again when opened. Files not yet uploaded are left alone.",
            {"Remove Downloads", "Cancel"}};
  }
  static Alert nothing(const std::string& name) {
    return {"Nothing to Free in " + name, "No downloaded iCloud files were found there.", {}};
  }
  static Alert report(const std::string& text) { return {"Freeing Up Space", text, {}}; }
};

TEST_F(FreeUpSpaceTest, panelForFolderOpensInFront) {
  open();
  platform.statusBar.choose("Free Up Space…");
  EXPECT_EQ(platform.application.activations(), 1);
  EXPECT_THAT(platform.dialogs.takeFolderPanels(),
              ElementsAre(FolderPanel{
                  "Free Up Space",
                  "Choose a folder. Downloaded files inside it will be removed from this Mac; they "
                  "stay in iCloud and download again when opened.",
                  "Choose", drive, "iCloud Drive"}));
}

TEST_F(FreeUpSpaceTest, cancelledPanelEndsSilently) {
  open();
  platform.statusBar.choose("Free Up Space…");
  platform.settle();
  EXPECT_THAT(platform.cloudFiles.takeWalks(), IsEmpty());
  EXPECT_THAT(alerts(), IsEmpty());
  EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(FreeUpSpaceTest, surveyAndEvictionRunInBackground) {
  fill(photos, 2);
  pick(photos);
  const auto before = platform.backgroundQueue.qualities().size();
  EXPECT_THAT(platform.cloudFiles.takeWalks(), IsEmpty());
  EXPECT_EQ(platform.backgroundQueue.waiting(), 1U);

  EXPECT_TRUE(platform.backgroundQueue.runNext());
  EXPECT_THAT(platform.cloudFiles.takeWalks(), ElementsAre(photos));
  EXPECT_THAT(alerts(), IsEmpty());

  platform.dialogs.answer(removeDownloads);
  platform.mainQueue.runAll();
  EXPECT_EQ(alerts().size(), 1U);
  EXPECT_THAT(platform.cloudFiles.takeEvictions(), IsEmpty());

  EXPECT_TRUE(platform.backgroundQueue.runNext());
  EXPECT_EQ(platform.cloudFiles.takeEvictions(), files(photos, 2));
  EXPECT_THAT(alerts(), IsEmpty());

  platform.mainQueue.runAll();
  EXPECT_EQ(alerts().size(), 1U);

  const auto qualities = platform.backgroundQueue.qualities();
  ASSERT_EQ(qualities.size(), before + 1);
  EXPECT_EQ(qualities[before - 1], QualityOfService::userInitiated);
  EXPECT_EQ(qualities[before], QualityOfService::userInitiated);
}

TEST_F(FreeUpSpaceTest, runWithoutThreadIsLoggedAndEnds) {
  fill(photos, 2);
  platform.backgroundQueue.refuse(PlatformError{"no thread"});
  pick(photos);
  platform.settle();
  EXPECT_THAT(platform.cloudFiles.takeWalks(), IsEmpty());
  EXPECT_EQ(takeLog().back(), "Driftmark: freeing up space failed: no thread");

  platform.backgroundQueue.refuse(std::nullopt);
  pick(photos);
  EXPECT_TRUE(platform.backgroundQueue.runNext());
  platform.backgroundQueue.refuse(PlatformError{"no thread"});
  platform.dialogs.answer(removeDownloads);
  platform.settle();
  EXPECT_THAT(platform.cloudFiles.takeEvictions(), IsEmpty());
  EXPECT_EQ(alerts().size(), 1U);
  EXPECT_EQ(takeLog().back(), "Driftmark: freeing up space failed: no thread");
}

TEST_F(FreeUpSpaceTest, subfolderIsCalledByName) {
  fill(photos, 3);
  pick(photos);
  platform.settle();
  EXPECT_THAT(alerts(), ElementsAre(question("Photos", "3 files using 12288 bytes")));
}

TEST_F(FreeUpSpaceTest, driveItselfIsCalledICloudDrive) {
  fill(drive, 3);
  pick(drive);
  platform.settle();
  EXPECT_THAT(alerts(), ElementsAre(question("iCloud Drive", "3 files using 12288 bytes")));
}

TEST_F(FreeUpSpaceTest, driveByOtherPathIsCalledByName) {
  pick("/Volumes/Other/../.." + drive);
  platform.settle();
  EXPECT_THAT(alerts(), ElementsAre(nothing("com~apple~CloudDocs")));
}

TEST_F(FreeUpSpaceTest, oneFileIsCountedInPlural) {
  fill(photos, 1);
  pick(photos);
  platform.settle();
  EXPECT_THAT(alerts(), ElementsAre(question("Photos", "1 files using 4096 bytes")));
}

TEST_F(FreeUpSpaceTest, folderWithoutDownloadsHasNothingToFree) {
  pick(photos);
  platform.settle();
  EXPECT_THAT(alerts(), ElementsAre(nothing("Photos")));
  pick(drive);
  platform.settle();
  EXPECT_THAT(alerts(), ElementsAre(nothing("iCloud Drive")));
  EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(FreeUpSpaceTest, cancelledConfirmationEvictsNothing) {
  for (const bool isAnswered : {true, false}) {
    fill(photos, 2);
    if (isAnswered)
      platform.dialogs.answer(cancel);
    else
      platform.dialogs.leaveUnanswered();
    pick(photos);
    platform.settle();
    EXPECT_EQ(alerts().size(), 1U);
  }
  EXPECT_THAT(platform.cloudFiles.takeEvictions(), IsEmpty());
  EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(FreeUpSpaceTest, cancelledSurveyIsReleasedInBackground) {
  fill(photos, 2);
  platform.dialogs.answer(cancel);
  pick(photos);
  EXPECT_TRUE(platform.backgroundQueue.runNext());
  platform.mainQueue.runAll();
  EXPECT_EQ(platform.backgroundQueue.waiting(), 1U);
  EXPECT_EQ(platform.backgroundQueue.qualities().back(), QualityOfService::utility);
}

TEST_F(FreeUpSpaceTest, evictionIsLoggedAndReported) {
  fill(photos, 3);
  platform.dialogs.answer(removeDownloads);
  pick(photos);
  platform.settle();
  EXPECT_EQ(platform.cloudFiles.takeEvictions(), files(photos, 3));
  EXPECT_THAT(alerts(),
              ElementsAre(question("Photos", "3 files using 12288 bytes"),
                          report("iCloud is removing 3 downloads (12288 bytes). Space is freed as "
                                 "each file is evicted.")));
  EXPECT_THAT(takeLog(), ElementsAre("Driftmark: evicting 3 files (12288 bytes) under " + photos));
}

TEST_F(FreeUpSpaceTest, failuresAreCountedInReportAndExplainedInLog) {
  fill(photos, 10);
  for (const char* name : {"/2.jpg", "/5.jpg", "/9.jpg"})
    platform.cloudFiles.failEviction(photos + name, "busy");
  platform.dialogs.answer(removeDownloads);
  pick(photos);
  platform.settle();
  EXPECT_EQ(alerts().back(),
            report("iCloud is removing 7 downloads; 3 could not be evicted (see the log)."));
  EXPECT_THAT(takeLog(), ElementsAre("Driftmark: evicting 10 files (40960 bytes) under " + photos,
                                     "Driftmark: evict failed for " + photos + "/2.jpg: busy",
                                     "Driftmark: evict failed for " + photos + "/5.jpg: busy",
                                     "Driftmark: evict failed for " + photos + "/9.jpg: busy"));
}

TEST_F(FreeUpSpaceTest, everyEvictionCanFail) {
  fill(photos, 1);
  platform.cloudFiles.failEviction(photos + "/1.jpg", "busy");
  platform.dialogs.answer(removeDownloads);
  pick(photos);
  platform.settle();
  EXPECT_EQ(alerts().back(),
            report("iCloud is removing 0 downloads; 1 could not be evicted (see the log)."));
}

TEST_F(FreeUpSpaceTest, severalRunsAreIndependent) {
  fill(photos, 1);
  fill(drive, 2);
  platform.dialogs.answer(removeDownloads);
  platform.dialogs.answer(removeDownloads);
  open();
  for (const std::string& folder : {photos, drive}) {
    platform.dialogs.choose(folder);
    platform.statusBar.choose("Free Up Space…");
  }
  EXPECT_EQ(platform.backgroundQueue.waiting(), 2U);
  platform.settle();
  EXPECT_THAT(platform.cloudFiles.takeWalks(), ElementsAre(photos, drive));
  EXPECT_THAT(
      alerts(),
      ElementsAre(question("Photos", "1 files using 4096 bytes"),
                  question("iCloud Drive", "2 files using 8192 bytes"),
                  report("iCloud is removing 1 downloads (4096 bytes). Space is freed as each file "
                         "is evicted."),
                  report("iCloud is removing 2 downloads (8192 bytes). Space is freed as each file "
                         "is evicted.")));
}

TEST_F(FreeUpSpaceTest, menuIsLiveWhileSurveyRuns) {
  fill(photos, 1);
  pick(photos);
  upload("/Reports/q3.pdf");
  open();
  EXPECT_EQ(menuItem("q3.pdf").title, "q3.pdf  —  uploading");
}

TEST_F(FreeUpSpaceTest, runHoldsControllerUntilItEnds) {
  fill(photos, 1);
  platform.dialogs.answer(removeDownloads);
  pick(photos);
  const std::weak_ptr<StatusItemController> weak = std::exchange(controller, nullptr);
  EXPECT_FALSE(weak.expired());
  platform.settle();
  EXPECT_EQ(alerts().size(), 2U);
  EXPECT_TRUE(weak.expired());
}

/// The controller and the objects that it owns may be destroyed on the main thread only.
TEST_F(FreeUpSpaceTest, backgroundThreadDoesNotHoldTheControllerLongerThanTheMainQueue) {
  fill(photos, 1);
  pick(photos);
  const std::weak_ptr<StatusItemController> weak = std::exchange(controller, nullptr);
  int handed = 0;
  platform.mainQueue.onAsync([&] {
    ++handed;
    EXPECT_FALSE(weak.expired());
    platform.mainQueue.clear(); // as if the main thread were done with the task already
    EXPECT_TRUE(weak.expired()) << "the background thread would be the last to release it";
  });
  EXPECT_TRUE(platform.backgroundQueue.runNext());
  EXPECT_EQ(handed, 1);
}

} // namespace
} // namespace driftmark::test
