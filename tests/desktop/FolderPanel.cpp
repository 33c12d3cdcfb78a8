// The folder panel with mouse and keyboard events from the display, and with a screen reader.

#include "desktop/ScreenReader.h"
#include "desktop/Session.h"
#include "harness/BuiltFiles.h"
#include "harness/ui/ProgramUi.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using icloud::Window;

class FolderPanel : public testing::Test {
protected:
  FolderPanel() {
    session_.openDisplay();
    reader_.emplace(session_.openBus());
    session_.writeTool("/usr/bin/brctl", execChildTool("wait"));
    fs::create_directories(drive() / "Photos");
    fs::create_directories(drive() / "Letters");
    program_.emplace(session_.start());
    driver_.emplace(session_.awaitDriver());
    chooseInMenu(*driver_, "Free Up Space…");
  }

  fs::path drive() const {
    return session_.home() / "Library/Mobile Documents/com~apple~CloudDocs";
  }

  void use(std::vector<std::string> input) { session_.run("/usr/bin/xdotool", std::move(input)); }

  void clickOn(const Accessible& item) {
    const QPoint middle = item.place.center();
    use({"mousemove", std::to_string(middle.x()), std::to_string(middle.y()), "click", "1"});
  }

  /// Waits until the panel is showing and lists its folders. Returns it.
  Accessible panel() {
    const auto isListed = [](const Accessible& shown) {
      const Accessible* const dialog = shown.first("dialog");
      const Accessible* const folders = dialog != nullptr ? dialog->first("tree") : nullptr;
      return folders != nullptr && folders->isShowing && folders->first("tree item") != nullptr;
    };
    const Accessible shown = reader_->awaitProgram(program_->process.identifier(), isListed);
    return *shown.first("dialog");
  }

  void expectNothingToFree(const std::string& name) {
    awaitAlert(*driver_, "Nothing to Free in " + name);
  }

  void awaitNoPanel() {
    driver_->awaitAbsence([](const Window& window) { return window.title == "Free Up Space"; });
  }

  Session session_;
  std::optional<ScreenReader> reader_;
  std::optional<RunningProgram> program_;
  std::optional<icloud::UiDriver> driver_;
};

TEST_F(FolderPanel, panelIsReadByScreenReader) {
  const Accessible shown = panel();
  EXPECT_EQ(shown.name, "Free Up Space");
  const Accessible& message =
      shown.shown("label", "Choose a folder. Downloaded files inside it will be removed from this "
                           "Mac; they stay in iCloud and download again when opened.");
  EXPECT_TRUE(shown.place.contains(message.place));
  EXPECT_TRUE(shown.shown("text", "Folder:").isFocused);
  EXPECT_TRUE(shown.shown("tree", "Folders").isFocusable);
  EXPECT_TRUE(shown.shown("list", "Places").isFocusable);
  EXPECT_TRUE(shown.shown("push button", "Choose").isEnabled);
  reader_->perform(shown.shown("push button", "Cancel"), "Press");
  awaitNoPanel();
}

TEST_F(FolderPanel, clickTakesOpenFolder) {
  clickOn(panel().shown("push button", "Choose"));
  expectNothingToFree("iCloud Drive");
}

TEST_F(FolderPanel, clicksTakeListedFolder) {
  clickOn(panel().shown("tree item", "Photos"));
  clickOn(panel().shown("push button", "Choose"));
  expectNothingToFree("Photos");
}

TEST_F(FolderPanel, returnTakesTypedPath) {
  panel();
  use({"type", drive() / "Letters"});
  use({"key", "Return"});
  expectNothingToFree("Letters");
}

TEST_F(FolderPanel, escapeTakesNothing) {
  panel();
  use({"key", "Escape"});
  awaitNoPanel();
}

} // namespace
} // namespace driftmark::test
