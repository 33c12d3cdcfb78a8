// A user frees up space: every window with its whole text, and the files on disk.

#include "desktop/FreeUpSpaceTest.h"
#include "harness/ui/ProgramUi.h"

#include <algorithm>
#include <fstream>

#include <gmock/gmock.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using icloud::MenuEntry;
using icloud::Window;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* files = "files 3 \"Photos/IMG {n}.heic\" 8192\n"
                              "file \"Photos/Album/Cover.heic\" 4096\n"
                              "file \"Photos/Only there.heic\" 8192 remote\n"
                              "file \"Letters/Letter.pages\" 4096\n"
                              "folder \"Empty\"\n";

class FreeUpSpace : public FreeUpSpaceTest {};

TEST_F(FreeUpSpace, panelOpensAtDrive) {
  start(files);
  const Window panel = openPanel();
  EXPECT_EQ(panel.title, "Free Up Space");
  EXPECT_TRUE(panel.isModal);
  EXPECT_THAT(panel.texts, Contains("Choose a folder. Downloaded files inside it will be removed "
                                    "from this Mac; they stay in iCloud and download again when "
                                    "opened."));
  EXPECT_EQ(panel.defaultButton().title, "Choose");
  EXPECT_THAT(panel.buttonTitles(), Contains("Cancel"));
  driver_->press("Choose");
  expectQuestion("iCloud Drive", 5, "33 KB");
  answer("Cancel");
  expectOrderlyEnd();
}

TEST_F(FreeUpSpace, wholeDriveIsFreed) {
  start(files);
  EXPECT_EQ(usage(), 5 * 4096U + 3 * 4096U);
  openPanel();
  driver_->press("Choose");
  expectQuestion("iCloud Drive", 5, "33 KB");
  driver_->press("Remove Downloads");
  expectReport("iCloud is removing 5 downloads (33 KB). Space is freed as each file is evicted.");
  EXPECT_EQ(usage(), 0U);
  EXPECT_EQ(fs::file_size(drive() / "Letters/Letter.pages"), 4096U);
  answer("OK");
  EXPECT_THAT(evictionLines(),
              ElementsAre("Driftmark: evicting 5 files (33 KB) under " + drive().string()));

  pick(".");
  expectNothingToFree("iCloud Drive");
  answer("OK");
  EXPECT_EQ(evictionLines().size(), 1U);
  expectOrderlyEnd();
}

TEST_F(FreeUpSpace, onlyChosenFolderIsFreed) {
  start(files);
  pick("Photos");
  expectQuestion("Photos", 4, "29 KB");
  driver_->press("Remove Downloads");
  expectReport("iCloud is removing 4 downloads (29 KB). Space is freed as each file is evicted.");
  answer("OK");
  EXPECT_EQ(usage("Photos"), 0U);
  EXPECT_EQ(usage("Letters"), 4096U);
  EXPECT_THAT(evictionLines(), ElementsAre("Driftmark: evicting 4 files (29 KB) under " +
                                           (drive() / "Photos").string()));
  expectOrderlyEnd();
}

TEST_F(FreeUpSpace, menuListsRemovedDownload) {
  start("file \"Photos/Cover.heic\" 4096\n");
  pick("Photos");
  expectQuestion("Photos", 1, "4 KB");
  driver_->press("Remove Downloads");
  program_->log.readUntil("Driftmark: evicted Cover.heic\n");
  expectReport("iCloud is removing 1 downloads (4 KB). Space is freed as each file is evicted.");
  answer("OK");
  driver_->click("MenuBarStrip");
  const auto entries = driver_->awaitMenu().entries;
  EXPECT_TRUE(std::ranges::any_of(entries, [](const MenuEntry& entry) {
    return entry.text.starts_with("Cover.heic  —  removed download");
  }));
  expectOrderlyEnd();
}

TEST_F(FreeUpSpace, evictedFileDownloadsAgain) {
  start("file \"Photos/Cover.heic\" 400KB\n");
  const fs::path file = drive() / "Photos/Cover.heic";
  const std::string before = contentsOf(file);
  pick("Photos");
  driver_->awaitAlert();
  driver_->press("Remove Downloads");
  expectReport("iCloud is removing 1 downloads (401 KB). Space is freed as each file is evicted.");
  answer("OK");
  EXPECT_EQ(usage("Photos"), 0U);
  session_.run(session_.root() / "usr/bin/brctl", {"download", file});
  program_->log.readUntil("Driftmark: downloading Cover.heic\n");
  program_->log.readUntil("Driftmark: synced Cover.heic (download)\n");
  EXPECT_EQ(contentsOf(file), before);
  expectOrderlyEnd();
}

TEST_F(FreeUpSpace, folderWithoutDownloadsIsReported) {
  start(files);
  const fs::path elsewhere = session_.folder() / "Elsewhere";
  fs::create_directory(elsewhere);
  std::ofstream(elsewhere / "a file of one's own") << "kept";
  for (const fs::path& folder : {drive() / "Empty", elsewhere}) {
    pick(folder);
    expectNothingToFree(folder.filename());
    answer("OK");
  }
  EXPECT_EQ(contentsOf(elsewhere / "a file of one's own"), "kept");
  EXPECT_THAT(evictionLines(), IsEmpty());
  expectOrderlyEnd();
}

TEST_F(FreeUpSpace, cancelledPanelChangesNothing) {
  start(files);
  const std::uint64_t before = usage();
  for (const bool byMouse : {true, false}) {
    const int panel = openPanel().number;
    if (byMouse)
      driver_->press("Cancel");
    else
      driver_->key("Escape");
    driver_->awaitAbsence([panel](const Window& window) { return window.number == panel; });
  }
  // A survey of an earlier run would ask before this one.
  pick("Letters");
  expectQuestion("Letters", 1, "4 KB");
  answer("Cancel");
  EXPECT_EQ(usage(), before);
  EXPECT_THAT(evictionLines(), IsEmpty());
  expectOrderlyEnd();
}

TEST_F(FreeUpSpace, cancelledQuestionChangesNothing) {
  start(files);
  const std::uint64_t before = usage();
  for (const bool byMouse : {true, false}) {
    pick("Photos");
    expectQuestion("Photos", 4, "29 KB");
    const int question = driver_->awaitAlert().number;
    if (byMouse)
      driver_->press("Cancel");
    else
      driver_->key("Escape");
    driver_->awaitAbsence([question](const Window& window) { return window.number == question; });
  }
  EXPECT_EQ(usage(), before);
  EXPECT_THAT(evictionLines(), IsEmpty());
  expectOrderlyEnd();
}

} // namespace
} // namespace driftmark::test
