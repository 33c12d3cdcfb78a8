#include "e2e/Channel.h"
#include "e2e/TemporaryFolder.h"
#include "person/Seat.h"
#include "process/Launch.h"

#include <csignal>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

namespace icloud::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class PersonTest : public testing::Test {
protected:
  Launch subject(const Seat& seat) const {
    Launch launch{PERSON_SUBJECT, {}, seat.environment()};
    launch.environment["XDG_RUNTIME_DIR"] = folder_.path();
    launch.environment["QT_QPA_PLATFORM"] = "offscreen";
    return launch;
  }

  Window mainWindow() {
    return person_.awaitWindow([](const Window& window) { return window.title == "subject"; });
  }
  std::string said() { return mainWindow().texts.front(); }

  TemporaryFolder folder_;
  Seat seat_{folder_.path()};
  ChildProcess program_{subject(seat_)};
  Person person_ = seat_.awaitProgram();
};

TEST_F(PersonTest, knowsTheProgram) {
  EXPECT_EQ(person_.process(), program_.identifier());
  EXPECT_EQ(person_.program(), PERSON_SUBJECT);
}

TEST_F(PersonTest, seesWhatAWindowHolds) {
  const Window window = mainWindow();
  EXPECT_EQ(window.kind, Window::Kind::other);
  EXPECT_THAT(window.texts, ElementsAre("nothing"));
  EXPECT_THAT(window.buttonTitles(), ElementsAre("Ask & wait", "Off", "Folder"));
  EXPECT_FALSE(window.buttons[1].isEnabled);
  EXPECT_EQ(window.part("strip").toolTip, "a tip");
  EXPECT_EQ(window.part("strip").accessibleName, "the strip");
  EXPECT_EQ(window.part("strip").place.height, 24);
}

TEST_F(PersonTest, answersAlertsThatWaitInsideOneClick) {
  mainWindow();
  person_.press("Ask & wait");
  const Window first = person_.awaitAlert();
  EXPECT_TRUE(first.isModal);
  EXPECT_THAT(first.texts, ElementsAre("First?", "informative"));
  EXPECT_THAT(first.buttonTitles(), testing::UnorderedElementsAre("Yes", "No"));
  person_.press("No");
  EXPECT_EQ(person_.awaitAlert().texts.front(), "Second?");
  person_.key("Return");
  person_.awaitAbsence([](const Window& window) { return window.kind == Window::Kind::alert; });
  EXPECT_EQ(said(), "no yes");
}

TEST_F(PersonTest, reachesNothingBehindAnAlert) {
  mainWindow();
  person_.press("Ask & wait");
  person_.awaitAlert();
  EXPECT_THROW(person_.press("Ask & wait"), std::runtime_error);
}

TEST_F(PersonTest, opensAMenuAndChoosesFromIt) {
  mainWindow();
  person_.click("strip");
  const Window menu = person_.awaitMenu();
  ASSERT_EQ(menu.entries.size(), 4U);
  EXPECT_EQ(menu.entries[0].text, "Greet & go");
  EXPECT_EQ(menu.entries[0].shortcut, "Ctrl+G");
  EXPECT_TRUE(menu.entries[1].isChecked);
  EXPECT_TRUE(menu.entries[2].isSeparator);
  EXPECT_FALSE(menu.entry("Never").isEnabled);
  EXPECT_THROW(person_.choose("Never"), std::runtime_error);
  EXPECT_THROW(person_.choose("Missing"), std::runtime_error);
  person_.choose("Greet & go");
  person_.awaitAbsence([](const Window& window) { return window.kind == Window::Kind::menu; });
  EXPECT_EQ(said(), "greeted");
}

TEST_F(PersonTest, closesAMenuWithoutAChoice) {
  mainWindow();
  person_.click("strip");
  person_.awaitMenu();
  person_.key("Escape");
  person_.awaitAbsence([](const Window& window) { return window.kind == Window::Kind::menu; });
  EXPECT_EQ(said(), "nothing");
}

TEST_F(PersonTest, clicksWithAnyMouseButton) {
  mainWindow();
  person_.click("strip", "right");
  EXPECT_EQ(said(), "right");
  EXPECT_THROW(person_.click("strip", "fourth"), std::runtime_error);
  EXPECT_THROW(person_.click("nowhere"), std::runtime_error);
}

TEST_F(PersonTest, typesIntoWhatHasTheKeyboard) {
  mainWindow();
  person_.click("line");
  person_.type("Ab ü🏖1");
  EXPECT_EQ(said(), "Ab ü🏖1");
  person_.key("Return");
  person_.awaitEnd();
  EXPECT_EQ(program_.wait(), 0);
}

TEST_F(PersonTest, picksAFolderByItsPath) {
  const auto folder = folder_.path() / "Été à la plage 🏖";
  std::filesystem::create_directories(folder / "inside");
  std::filesystem::create_directory(folder / "insider");
  for (const auto& picked : {folder, folder / "inside", folder_.path()}) {
    mainWindow();
    person_.press("Folder");
    person_.pickFolder(picked);
    person_.awaitAbsence([](const Window& window) { return window.isModal; });
    EXPECT_EQ(said(), picked);
  }
}

TEST_F(PersonTest, picksNoFolderThatIsNotThere) {
  mainWindow();
  person_.press("Folder");
  EXPECT_THROW(person_.pickFolder(folder_.path() / "missing"), std::runtime_error);
  person_.press("Cancel");
  person_.awaitAbsence([](const Window& window) { return window.isModal; });
  EXPECT_EQ(said(), "no folder");
}

TEST_F(PersonTest, refusesWhatIsNotThere) {
  mainWindow();
  EXPECT_THROW(person_.press("Missing"), std::runtime_error);
  EXPECT_THROW(person_.press("Off"), std::runtime_error);
  EXPECT_THROW(person_.key("No such key"), std::runtime_error);
  EXPECT_THROW(person_.screenshot(folder_.path() / "missing" / "shot.png"), std::runtime_error);
}

TEST_F(PersonTest, keepsPictures) {
  const Window window = mainWindow();
  const auto whole = folder_.path() / "screen.png";
  const auto one = folder_.path() / "window.png";
  person_.screenshot(whole);
  person_.screenshot(one, window.number);
  EXPECT_THAT(contentsOf(whole), HasSubstr("PNG"));
  EXPECT_THAT(contentsOf(one), HasSubstr("PNG"));
  EXPECT_GT(std::filesystem::file_size(whole), std::filesystem::file_size(one));
}

TEST_F(PersonTest, noticesThatTheProgramIsGone) {
  mainWindow();
  program_.signal(SIGKILL);
  person_.awaitEnd();
  EXPECT_THROW(person_.windows(), std::exception);
  EXPECT_TRUE(WIFSIGNALED(program_.wait()));
}

TEST_F(PersonTest, attendsSeveralPrograms) {
  ChildProcess other(subject(seat_));
  Person second = seat_.awaitProgram();
  EXPECT_EQ(second.process(), other.identifier());
  mainWindow();
  person_.click("strip", "right");
  EXPECT_EQ(said(), "right");
  const Window window = second.awaitWindow([](const Window&) { return true; });
  EXPECT_EQ(window.texts.front(), "nothing");
}

TEST_F(PersonTest, leavesAProgramThatNobodyAttendsAlone) {
  Launch launch = subject(seat_);
  launch.environment["ICLOUD_PERSON"] = folder_.path() / "nobody";
  Channel errors = Channel::pipe();
  launch.error = errors.childEnd();
  ChildProcess unattended(launch);
  errors.readUntil("nobody is at");
  EXPECT_FALSE(unattended.hasEnded());
  EXPECT_TRUE(WIFSIGNALED(unattended.end(std::chrono::seconds(10))));
}

} // namespace
} // namespace icloud::test
