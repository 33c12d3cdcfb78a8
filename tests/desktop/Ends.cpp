// How the program ends, and that nothing outlives it.

#include "desktop/Session.h"
#include "harness/BuiltFiles.h"

#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

namespace driftmark::test {
namespace {

using icloud::UiDriver;
using icloud::Window;
using testing::IsEmpty;

class Ends : public testing::Test {
protected:
  /// Starts the program, and waits until its monitors run. They write nothing, so that the end of
  /// their terminals does not end them.
  explicit Ends(const std::string& steps = "wait") {
    session_.writeTool("/usr/bin/brctl", execChildTool(steps));
    program_.emplace(session_.start());
    driver_.emplace(session_.attend());
    program_->log.readUntil("brctl monitor -g started");
    driver_->awaitWindow([](const Window& window) { return window.kind == Window::Kind::other; });
  }

  void expectOrderlyEnd() {
    EXPECT_EQ(icloud::describeEnd(program_->process.wait()), "status 0");
    expectNothingLeft();
  }

  void expectNothingLeft() {
    EXPECT_THAT(session_.leftRunning(), IsEmpty());
    EXPECT_THAT(program_->log.readToEnd(), Not(testing::HasSubstr("restarting")));
  }

  void openMenu() {
    driver_->click("MenuBarStrip");
    driver_->awaitMenu();
  }

  Session session_;
  Display& display_ = session_.openDisplay();
  std::optional<Program> program_;
  std::optional<UiDriver> driver_;
};

TEST_F(Ends, byEitherSignal) {
  program_->process.signal(SIGTERM);
  expectOrderlyEnd();
  program_.reset();
  program_.emplace(session_.start());
  program_->log.readUntil("brctl monitor -g started");
  program_->process.signal(SIGINT);
  expectOrderlyEnd();
}

TEST_F(Ends, byBothSignalsSeveralTimes) {
  for (const int signal : {SIGTERM, SIGINT, SIGTERM, SIGINT})
    program_->process.signal(signal);
  expectOrderlyEnd();
}

TEST_F(Ends, byTheMenu) {
  openMenu();
  driver_->choose("Quit Driftmark");
  expectOrderlyEnd();
}

TEST_F(Ends, byASignalWhileTheMenuIsOpen) {
  openMenu();
  program_->process.signal(SIGTERM);
  expectOrderlyEnd();
}

TEST_F(Ends, byASignalWhileTheAboutPanelIsOpen) {
  openMenu();
  driver_->choose("About Driftmark");
  driver_->awaitWindow([](const Window& window) { return window.kind == Window::Kind::dialog; });
  program_->process.signal(SIGINT);
  expectOrderlyEnd();
}

TEST_F(Ends, withTheDisplay) {
  display_.close();
  EXPECT_TRUE(WIFEXITED(program_->process.wait()));
  expectNothingLeft();
}

TEST_F(Ends, withTheDisplayWhileTheMenuIsOpen) {
  openMenu();
  display_.close();
  EXPECT_TRUE(WIFEXITED(program_->process.wait()));
  expectNothingLeft();
}

class EndsOfStubbornTools : public Ends {
protected:
  EndsOfStubbornTools() : Ends("ignore-terminate print ready wait") {}
};

TEST_F(EndsOfStubbornTools, byASignal) {
  program_->process.signal(SIGTERM);
  expectOrderlyEnd();
}

TEST_F(EndsOfStubbornTools, withTheDisplay) {
  display_.close();
  EXPECT_TRUE(WIFEXITED(program_->process.wait()));
  expectNothingLeft();
}

} // namespace
} // namespace driftmark::test
