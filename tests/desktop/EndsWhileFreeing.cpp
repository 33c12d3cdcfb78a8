// How the program ends while it frees space.

#include "desktop/Session.h"
#include "harness/BuiltFiles.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <sys/xattr.h>

namespace driftmark::test {
namespace {

using icloud::UiDriver;
using icloud::Window;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class EndsWhileFreeing : public testing::Test {
protected:
  EndsWhileFreeing() { std::filesystem::create_directories(drive_); }

  void addCurrentFile(const std::string& name) const {
    constexpr std::string_view state = "current";
    std::ofstream(drive_ / name) << "contents";
    ASSERT_EQ(setxattr((drive_ / name).c_str(), "user.icloud.state", state.data(), state.size(), 0),
              0);
  }

  /// Starts the program with a `brctl` that evicts by these shell commands.
  void start(const std::string& eviction) {
    session_.writeTool("/usr/bin/brctl",
                       "[ \"$1\" = evict ] || exec " + childToolPath() + " wait\n" + eviction);
    program_.emplace(session_.start());
    driver_.emplace(session_.attend());
    program_->log.readUntil("brctl monitor -g started");
    driver_->awaitWindow([](const Window& window) { return window.kind == Window::Kind::other; });
  }

  void choose(const std::string& entry) {
    driver_->click("MenuBarStrip");
    driver_->awaitMenu();
    driver_->choose(entry);
  }

  void freeUpSpace() {
    choose("Free Up Space…");
    driver_->pickFolder(drive_);
  }

  /// Chooses the drive and has its files removed, up to the first eviction, which does not end.
  void beginEvictions() {
    for (int number = 0; number < 50; ++number)
      addCurrentFile("file " + std::to_string(number));
    start("echo \"$2\" >> '" + calls_.string() + "'\necho evicting > /proc/$PPID/fd/2\nexec " +
          childToolPath() + " wait");
    freeUpSpace();
    driver_->awaitAlert();
    driver_->press("Remove Downloads");
    program_->log.readUntil("evicting 50 files");
    program_->log.readUntil("\nevicting\n");
  }

  void expectOneEviction() {
    EXPECT_THAT(program_->log.readToEnd(), Not(HasSubstr("evict failed")));
    std::ifstream noted(calls_);
    int count = 0;
    for (std::string line; std::getline(noted, line);)
      ++count;
    EXPECT_EQ(count, 1);
  }

  void endBySignal() {
    program_->process.signal(SIGTERM);
    EXPECT_EQ(icloud::describeEnd(program_->process.wait()), "status 0");
    EXPECT_THAT(session_.leftRunning(), IsEmpty());
  }

  Session session_;
  Display& display_ = session_.openDisplay();
  std::filesystem::path calls_ = session_.folder() / "calls";
  std::filesystem::path drive_ = session_.home() / "Library/Mobile Documents/com~apple~CloudDocs";
  std::optional<Program> program_;
  std::optional<UiDriver> driver_;
};

TEST_F(EndsWhileFreeing, whileTheFolderIsChosen) {
  start("exit 0");
  choose("Free Up Space…");
  driver_->awaitWindow([](const Window& window) { return window.title == "Free Up Space"; });
  endBySignal();
  EXPECT_THAT(program_->log.readToEnd(), Not(HasSubstr("evict")));
}

TEST_F(EndsWhileFreeing, whileTheQuestionIsOpen) {
  addCurrentFile("file");
  start("exit 0");
  freeUpSpace();
  driver_->awaitAlert();
  endBySignal();
  EXPECT_THAT(program_->log.readToEnd(), Not(HasSubstr("evict")));
}

TEST_F(EndsWhileFreeing, byASignalWithoutWaitingForTheOtherFiles) {
  beginEvictions();
  endBySignal();
  expectOneEviction();
}

TEST_F(EndsWhileFreeing, withTheDisplayWithoutWaitingForTheOtherFiles) {
  beginEvictions();
  display_.close();
  EXPECT_TRUE(WIFEXITED(program_->process.wait()));
  EXPECT_THAT(session_.leftRunning(), IsEmpty());
  expectOneEviction();
}

} // namespace
} // namespace driftmark::test
