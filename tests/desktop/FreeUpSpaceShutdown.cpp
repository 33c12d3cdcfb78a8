// How the program ends while it frees space: with a script in the place of `brctl`, and with the
// simulated daemon.

#include "desktop/Calls.h"
#include "desktop/FreeUpSpaceTest.h"
#include "desktop/HeldFolders.h"
#include "desktop/Session.h"
#include "harness/BuiltFiles.h"
#include "harness/Waiting.h"

#include <algorithm>
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

namespace fs = std::filesystem;
using icloud::UiDriver;
using icloud::Window;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// The paths of all items below a folder, relative to it.
std::vector<std::string> itemsBelow(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(folder))
    names.push_back(entry.path().lexically_relative(folder));
  return names;
}

/// A display, and a `brctl` that is a script.
class FreeUpSpaceShutdown : public testing::Test {
protected:
  FreeUpSpaceShutdown() { std::filesystem::create_directories(drive_); }

  void addCurrentFile(const std::string& name) const {
    constexpr std::string_view state = "current";
    std::ofstream(drive_ / name) << "contents";
    ASSERT_EQ(setxattr((drive_ / name).c_str(), "user.icloud.state", state.data(), state.size(), 0),
              0);
  }

  /// Starts the program with a `brctl` that runs these shell commands for an eviction.
  void start(const std::string& eviction) {
    session_.writeTool("/usr/bin/brctl",
                       "[ \"$1\" = evict ] || exec " + childToolPath() + " wait\n" + eviction);
    program_.emplace(session_.start());
    driver_.emplace(session_.awaitDriver());
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

  /// Frees up the whole drive until the first eviction has started, which does not end.
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
    const std::string calls = contentsOf(calls_);
    EXPECT_EQ(std::ranges::count(calls, '\n'), 1) << calls;
  }

  void endBySignal() {
    program_->process.signal(SIGTERM);
    EXPECT_EQ(awaitEnd(program_->process), "status 0");
    EXPECT_THAT(session_.killLeftovers(), IsEmpty());
  }

  Session session_;
  Display& display_ = session_.openDisplay();
  std::filesystem::path calls_ = session_.folder() / "calls";
  std::filesystem::path drive_ = session_.home() / "Library/Mobile Documents/com~apple~CloudDocs";
  std::optional<RunningProgram> program_;
  std::optional<UiDriver> driver_;
};

TEST_F(FreeUpSpaceShutdown, signalEndsProgramWithOpenPanel) {
  start("exit 0");
  choose("Free Up Space…");
  driver_->awaitWindow([](const Window& window) { return window.title == "Free Up Space"; });
  endBySignal();
  EXPECT_THAT(program_->log.readToEnd(), Not(HasSubstr("evict")));
}

TEST_F(FreeUpSpaceShutdown, signalEndsProgramWithOpenQuestion) {
  addCurrentFile("file");
  start("exit 0");
  freeUpSpace();
  driver_->awaitAlert();
  endBySignal();
  EXPECT_THAT(program_->log.readToEnd(), Not(HasSubstr("evict")));
}

TEST_F(FreeUpSpaceShutdown, lostDisplayStopsEvictions) {
  beginEvictions();
  display_.close();
  EXPECT_TRUE(WIFEXITED(awaitExit(program_->process)));
  EXPECT_THAT(session_.killLeftovers(), IsEmpty());
  expectOneEviction();
}

/// A drive that a daemon keeps.
class FreeUpSpaceShutdownWithDaemon : public FreeUpSpaceTest {
protected:
  void expectNothingLeft(const std::vector<std::string>& before) {
    EXPECT_THAT(session_.killLeftovers({supervisor_->identifier()}), IsEmpty());
    EXPECT_THAT(program_->log.readToEnd(), Not(HasSubstr("failed")));
    EXPECT_THAT(itemsBelow(session_.home() / ".config"),
                testing::UnorderedElementsAreArray(before));
    EXPECT_THAT(itemsBelow(session_.folder() / "tmp"), Each(testing::StartsWith("driftmark-")));
  }

  std::vector<std::string> settings() const { return itemsBelow(session_.home() / ".config"); }
};

TEST_F(FreeUpSpaceShutdownWithDaemon, signalStopsSurvey) {
  constexpr int many = 1000;
  HeldFolders held(session_, "Held");
  std::string folders;
  for (int number = 0; number < many; ++number)
    folders += "folder \"Photos/Held " + std::to_string(number) + "\"\n";
  start("file \"Photos/Cover.heic\" 4096\n" + folders);
  const auto before = settings();
  pick("Photos");
  held.awaitOpening();
  program_->process.signal(SIGTERM);
  int openings = 1;
  for (held.releaseOne(); held.awaitOpeningOrExit(program_->process); held.releaseOne())
    ++openings;
  EXPECT_LT(openings, many);
  EXPECT_EQ(awaitEnd(program_->process), "status 0");
  EXPECT_EQ(usage(), 4096U);
  expectNothingLeft(before);
}

TEST_F(FreeUpSpaceShutdownWithDaemon, signalStopsEvictions) {
  Calls evictions(session_.folder() / "evictions");
  const fs::path go = session_.folder() / "continue";
  // The first file is evicted. The second eviction does not end.
  beforeEviction(evictions.script() + "\n[ -e '" + go.string() + "' ] && " + execChildTool("wait") +
                 "\n" + ": > '" + go.string() + "'");
  start("files 40 \"Photos/IMG {n}.heic\" 4096\n");
  const auto before = settings();
  pick("Photos");
  expectQuestion("Photos", 40, "164 KB");
  driver_->press("Remove Downloads");
  evictions.next();
  evictions.next();
  program_->process.signal(SIGTERM);
  EXPECT_EQ(awaitEnd(program_->process), "status 0");
  EXPECT_EQ(usage("Photos"), 39 * 4096U);
  expectNothingLeft(before);
}

} // namespace
} // namespace driftmark::test
