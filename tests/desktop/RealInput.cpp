// Mouse and keyboard events from the display.

#include "desktop/BrctlScript.h"
#include "desktop/Calls.h"
#include "desktop/ScreenReader.h"
#include "desktop/Session.h"
#include "harness/Waiting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using icloud::Window;
using testing::ElementsAre;
using testing::IsEmpty;

class RealInput : public testing::Test {
protected:
  RealInput() {
    session_.openDisplay();
    reader_.emplace(session_.openBus());
    session_.writeTool("/usr/bin/brctl", brctlUploading("a.txt", "45"));
    session_.writeTool("/usr/bin/xdg-open", opened_.script());
    program_.emplace(session_.start());
    driver_.emplace(session_.awaitDriver());
    program_->log.readUntil("state -> uploading");
  }

  void use(std::vector<std::string> input) { session_.run("/usr/bin/xdotool", std::move(input)); }

  void clickOn(const Accessible& item) {
    const QPoint middle = item.place.center();
    use({"mousemove", std::to_string(middle.x()), std::to_string(middle.y()), "click", "1"});
  }

  /// Waits for an item with that role. Returns it.
  Accessible await(const std::string& role) {
    const Accessible program =
        reader_->awaitProgram(program_->process.identifier(), [&role](const Accessible& shown) {
          return shown.first(role) != nullptr;
        });
    return *program.first(role);
  }

  /// Opens the menu with a click on the strip.
  Accessible openMenu() {
    clickOn(await("button menu"));
    driver_->awaitMenu();
    return await("popup menu");
  }

  void awaitNoMenu() {
    driver_->awaitAbsence([](const Window& window) { return window.kind == Window::Kind::menu; });
  }

  void expectOrderlyEnd() {
    EXPECT_EQ(awaitEnd(program_->process), "status 0");
    EXPECT_THAT(program_->log.readToEnd(), Not(testing::HasSubstr("restarting")));
  }

  Session session_;
  Calls opened_{session_.folder() / "opened"};
  std::optional<ScreenReader> reader_;
  std::optional<RunningProgram> program_;
  std::optional<icloud::UiDriver> driver_;
};

TEST_F(RealInput, clickOpensMenuAndClickOnEntryChoosesIt) {
  clickOn(openMenu().named("a.txt  —  uploading 45%"));
  const std::string drive = session_.home() / "Library/Mobile Documents/com~apple~CloudDocs";
  EXPECT_THAT(opened_.next(), ElementsAre(drive));
  awaitNoMenu();
}

TEST_F(RealInput, clickOnLabelChoosesNothing) {
  const Accessible menu = openMenu();
  clickOn(menu.named("iCloud Drive: Uploading…"));
  clickOn(menu.named("About Driftmark"));
  driver_->awaitWindow([](const Window& window) { return window.kind == Window::Kind::dialog; });
}

TEST_F(RealInput, secondClickOnStripClosesMenu) {
  openMenu();
  clickOn(await("button menu"));
  awaitNoMenu();
  openMenu();
}

TEST_F(RealInput, clickElsewhereClosesMenu) {
  openMenu();
  use({"mousemove", "20", "700", "click", "1"});
  awaitNoMenu();
}

TEST_F(RealInput, pressDraggedToEntryChoosesIt) {
  const QPoint strip = await("button menu").place.center();
  use({"mousemove", std::to_string(strip.x()), std::to_string(strip.y()), "mousedown", "1"});
  driver_->awaitMenu();
  const QPoint entry = await("popup menu").named("Quit Driftmark").place.center();
  // The pointer passes over other entries.
  use({"mousemove", std::to_string(entry.x()), std::to_string(entry.y() - 30), "mousemove",
       std::to_string(entry.x()), std::to_string(entry.y() - 5), "mousemove",
       std::to_string(entry.x()), std::to_string(entry.y()), "mouseup", "1"});
  expectOrderlyEnd();
}

TEST_F(RealInput, arrowKeysChoose) {
  openMenu();
  use({"key", "Up", "Return"});
  expectOrderlyEnd();
}

TEST_F(RealInput, screenReaderFollowsArrowKeys) {
  openMenu();
  use({"key", "Down"});
  reader_->awaitProgram(program_->process.identifier(), [](const Accessible& program) {
    const Accessible* const menu = program.first("popup menu");
    return menu != nullptr && menu->named("a.txt  —  uploading 45%").isFocused;
  });
}

TEST_F(RealInput, escapeClosesMenu) {
  openMenu();
  use({"key", "Escape"});
  awaitNoMenu();
}

TEST_F(RealInput, shortcutsOfOpenMenuWork) {
  openMenu();
  use({"key", "ctrl+o"});
  EXPECT_THAT(opened_.next(),
              ElementsAre(session_.home() / "Library/Mobile Documents/com~apple~CloudDocs"));
  awaitNoMenu();
  openMenu();
  use({"key", "ctrl+q"});
  expectOrderlyEnd();
}

TEST_F(RealInput, shortcutsOfClosedMenuDoNothing) {
  openMenu();
  use({"key", "Escape"});
  awaitNoMenu();
  use({"key", "ctrl+q"});
  openMenu();
}

} // namespace
} // namespace driftmark::test
