// How the program ends on a display, and that no process outlives it.

#include "desktop/Session.h"
#include "harness/BuiltFiles.h"
#include "harness/Waiting.h"

#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

namespace driftmark::test {
namespace {

using icloud::UiDriver;
using icloud::Window;
using testing::IsEmpty;

class ProgramShutdown : public testing::Test {
protected:
  /// Starts the program with a `brctl` that runs these steps. Waits until the monitors run; they
  /// write nothing, so that they do not notice when their terminals close.
  explicit ProgramShutdown(const std::string& steps = "wait") {
    session_.writeTool("/usr/bin/brctl", execChildTool(steps));
    program_.emplace(session_.start());
    driver_.emplace(session_.awaitDriver());
    program_->log.readUntil("brctl monitor -g started");
    driver_->awaitWindow([](const Window& window) { return window.kind == Window::Kind::other; });
  }

  void expectOrderlyEnd() {
    EXPECT_EQ(awaitEnd(program_->process), "status 0");
    expectNothingLeft();
  }

  void expectNothingLeft() {
    EXPECT_THAT(session_.killLeftovers(), IsEmpty());
    EXPECT_THAT(program_->log.readToEnd(), Not(testing::HasSubstr("restarting")));
  }

  void openMenu() {
    driver_->click("MenuBarStrip");
    driver_->awaitMenu();
  }

  Session session_;
  Display& display_ = session_.openDisplay();
  std::optional<RunningProgram> program_;
  std::optional<UiDriver> driver_;
};

TEST_F(ProgramShutdown, repeatedSignalsEndProgramOnce) {
  for (const int signal : {SIGTERM, SIGINT, SIGTERM, SIGINT})
    program_->process.signal(signal);
  expectOrderlyEnd();
}

TEST_F(ProgramShutdown, quitInMenuEndsProgram) {
  openMenu();
  driver_->choose("Quit Driftmark");
  expectOrderlyEnd();
}

TEST_F(ProgramShutdown, signalEndsProgramWithOpenMenu) {
  openMenu();
  program_->process.signal(SIGTERM);
  expectOrderlyEnd();
}

TEST_F(ProgramShutdown, signalEndsProgramWithOpenAboutPanel) {
  openMenu();
  driver_->choose("About Driftmark");
  driver_->awaitWindow([](const Window& window) { return window.kind == Window::Kind::dialog; });
  program_->process.signal(SIGINT);
  expectOrderlyEnd();
}

TEST_F(ProgramShutdown, lostDisplayEndsProgramWithOpenMenu) {
  openMenu();
  display_.close();
  EXPECT_TRUE(WIFEXITED(awaitExit(program_->process)));
  expectNothingLeft();
}

/// The tools ignore SIGTERM.
class StubbornToolShutdown : public ProgramShutdown {
protected:
  StubbornToolShutdown() : ProgramShutdown("ignore-terminate print ready wait") {}
};

TEST_F(StubbornToolShutdown, lostDisplayEndsProgramAndTools) {
  display_.close();
  EXPECT_TRUE(WIFEXITED(awaitExit(program_->process)));
  expectNothingLeft();
}

} // namespace
} // namespace driftmark::test
