#include "harness/BuiltFiles.h"
#include "harness/Channel.h"
#include "harness/TemporaryFolder.h"
#include "process/ChildProcess.h"
#include "uidriver/DriverListener.h"

#include <csignal>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

namespace icloud::test {
namespace {

using driftmark::test::Channel;
using driftmark::test::contentsOf;
using driftmark::test::TemporaryFolder;
using driftmark::test::uiDriverSubject;

using testing::ElementsAre;
using testing::HasSubstr;

class UiDriverTest : public testing::Test {
protected:
  Launch subject(const DriverListener& listener) const {
    Launch launch{uiDriverSubject(), {}, listener.environment()};
    launch.environment["XDG_RUNTIME_DIR"] = folder_.path();
    launch.environment["QT_QPA_PLATFORM"] = "offscreen";
    return launch;
  }

  Window mainWindow() {
    return driver_.awaitWindow([](const Window& window) { return window.title == "subject"; });
  }
  std::string labelText() { return mainWindow().texts.front(); }

  TemporaryFolder folder_;
  DriverListener driverListener_{folder_.path()};
  ChildProcess program_{subject(driverListener_)};
  UiDriver driver_ = driverListener_.awaitProgram();
};

TEST_F(UiDriverTest, programIntroducesItself) {
  EXPECT_EQ(driver_.process(), program_.identifier());
  EXPECT_EQ(driver_.program(), uiDriverSubject());
}

TEST_F(UiDriverTest, windowListsItsContents) {
  const Window window = mainWindow();
  EXPECT_EQ(window.kind, Window::Kind::other);
  EXPECT_THAT(window.texts, ElementsAre("nothing"));
  EXPECT_THAT(window.buttonTitles(), ElementsAre("Ask & wait", "Off", "Folder"));
  EXPECT_FALSE(window.buttons[1].isEnabled);
  EXPECT_EQ(window.widget("strip").toolTip, "a tip");
  EXPECT_EQ(window.widget("strip").accessibleName, "the strip");
  EXPECT_EQ(window.widget("strip").geometry.height, 24);
}

TEST_F(UiDriverTest, alertsInsideOneClickAreAnswered) {
  mainWindow();
  driver_.press("Ask & wait");
  const Window first = driver_.awaitAlert();
  EXPECT_TRUE(first.isModal);
  EXPECT_THAT(first.texts, ElementsAre("First?", "informative"));
  EXPECT_THAT(first.buttonTitles(), testing::UnorderedElementsAre("Yes", "No"));
  driver_.press("No");
  EXPECT_EQ(driver_.awaitAlert().texts.front(), "Second?");
  driver_.key("Return");
  driver_.awaitAbsence([](const Window& window) { return window.kind == Window::Kind::alert; });
  EXPECT_EQ(labelText(), "no yes");
}

TEST_F(UiDriverTest, widgetsBehindAlertAreOutOfReach) {
  mainWindow();
  driver_.press("Ask & wait");
  driver_.awaitAlert();
  EXPECT_THROW(driver_.press("Ask & wait"), std::runtime_error);
}

TEST_F(UiDriverTest, menuOpensAndEntryIsChosen) {
  mainWindow();
  driver_.click("strip");
  const Window menu = driver_.awaitMenu();
  ASSERT_EQ(menu.entries.size(), 4U);
  EXPECT_EQ(menu.entries[0].text, "Greet & go");
  EXPECT_EQ(menu.entries[0].shortcut, "Ctrl+G");
  EXPECT_TRUE(menu.entries[1].isChecked);
  EXPECT_TRUE(menu.entries[2].isSeparator);
  EXPECT_FALSE(menu.entry("Never").isEnabled);
  EXPECT_THROW(driver_.choose("Never"), std::runtime_error);
  EXPECT_THROW(driver_.choose("Missing"), std::runtime_error);
  driver_.choose("Greet & go");
  driver_.awaitAbsence([](const Window& window) { return window.kind == Window::Kind::menu; });
  EXPECT_EQ(labelText(), "greeted");
}

TEST_F(UiDriverTest, escapeClosesMenuWithoutChoice) {
  mainWindow();
  driver_.click("strip");
  driver_.awaitMenu();
  driver_.key("Escape");
  driver_.awaitAbsence([](const Window& window) { return window.kind == Window::Kind::menu; });
  EXPECT_EQ(labelText(), "nothing");
}

TEST_F(UiDriverTest, mouseButtonsAreDistinguished) {
  mainWindow();
  driver_.click("strip", "right");
  EXPECT_EQ(labelText(), "right");
  EXPECT_THROW(driver_.click("strip", "fourth"), std::runtime_error);
  EXPECT_THROW(driver_.click("nowhere"), std::runtime_error);
}

TEST_F(UiDriverTest, typedTextGoesToFocusWidget) {
  mainWindow();
  driver_.click("line");
  driver_.type("Ab ü🏖1");
  EXPECT_EQ(labelText(), "Ab ü🏖1");
  driver_.key("Return");
  driver_.awaitEnd();
  EXPECT_EQ(program_.wait(), 0);
}

TEST_F(UiDriverTest, folderIsPickedByItsPath) {
  const auto folder = folder_.path() / "Été à la plage 🏖";
  std::filesystem::create_directories(folder / "inside");
  std::filesystem::create_directory(folder / "insider");
  for (const auto& picked : {folder, folder / "inside", folder_.path()}) {
    mainWindow();
    driver_.press("Folder");
    driver_.pickFolder(picked);
    driver_.awaitAbsence([](const Window& window) { return window.isModal; });
    EXPECT_EQ(labelText(), picked);
  }
}

TEST_F(UiDriverTest, missingFolderIsNotPicked) {
  mainWindow();
  driver_.press("Folder");
  EXPECT_THROW(driver_.pickFolder(folder_.path() / "missing"), std::runtime_error);
  driver_.press("Cancel");
  driver_.awaitAbsence([](const Window& window) { return window.isModal; });
  EXPECT_EQ(labelText(), "no folder");
}

TEST_F(UiDriverTest, impossibleRequestsAreRefused) {
  mainWindow();
  EXPECT_THROW(driver_.press("Missing"), std::runtime_error);
  EXPECT_THROW(driver_.press("Off"), std::runtime_error);
  EXPECT_THROW(driver_.key("No such key"), std::runtime_error);
  EXPECT_THROW(driver_.screenshot(folder_.path() / "missing" / "shot.png"), std::runtime_error);
}

TEST_F(UiDriverTest, screenshotsAreSaved) {
  const Window window = mainWindow();
  const auto whole = folder_.path() / "screen.png";
  const auto one = folder_.path() / "window.png";
  driver_.screenshot(whole);
  driver_.screenshot(one, window.number);
  EXPECT_THAT(contentsOf(whole), HasSubstr("PNG"));
  EXPECT_THAT(contentsOf(one), HasSubstr("PNG"));
  EXPECT_GT(std::filesystem::file_size(whole), std::filesystem::file_size(one));
}

TEST_F(UiDriverTest, endOfProgramIsNoticed) {
  mainWindow();
  program_.signal(SIGKILL);
  driver_.awaitEnd();
  EXPECT_THROW(driver_.windows(), std::exception);
  EXPECT_TRUE(WIFSIGNALED(program_.wait()));
}

TEST_F(UiDriverTest, severalProgramsAreDriven) {
  ChildProcess other(subject(driverListener_));
  UiDriver second = driverListener_.awaitProgram();
  EXPECT_EQ(second.process(), other.identifier());
  mainWindow();
  driver_.click("strip", "right");
  EXPECT_EQ(labelText(), "right");
  const Window window = second.awaitWindow([](const Window&) { return true; });
  EXPECT_EQ(window.texts.front(), "nothing");
}

TEST_F(UiDriverTest, programWithoutDriverRunsOn) {
  Launch launch = subject(driverListener_);
  launch.environment["ICLOUD_UI_DRIVER"] = folder_.path() / "no listener";
  Channel errors = Channel::pipe();
  launch.error = errors.childEnd();
  ChildProcess undriven(launch);
  errors.readUntil("cannot connect to the UI driver at");
  EXPECT_FALSE(undriven.hasEnded());
  EXPECT_TRUE(WIFSIGNALED(undriven.end(std::chrono::seconds(10))));
}

} // namespace
} // namespace icloud::test
