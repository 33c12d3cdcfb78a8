// How tests free up space as a user does.

#include "desktop/FreeUpSpaceTest.h"

#include "common/DiskUsage.h"
#include "harness/Waiting.h"
#include "harness/ui/ProgramUi.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <sstream>

#include <gmock/gmock.h>

namespace driftmark::test {

namespace fs = std::filesystem;
using icloud::Window;

FreeUpSpaceTest::FreeUpSpaceTest() {
  session_.setVariable("QT_QPA_PLATFORM", "offscreen");
  session_.installTools();
}

void FreeUpSpaceTest::startDaemon(const std::string& scenario) {
  const fs::path file = session_.folder() / "scenario";
  std::ofstream(file) << scenario;
  daemonLog_.emplace(Channel::pipe());
  icloud::Launch launch{session_.root() / "sbin/launchd",
                        {"--home", session_.home(), "--scenario", file, "--begin-after", "items"},
                        {}};
  launch.output = launch.error = daemonLog_->childEnd();
  supervisor_.emplace(launch);
  daemonLog_->closeChildEnd();
  daemonLog_->readUntil(" ready\n");
}

void FreeUpSpaceTest::startProgram() {
  program_.emplace(session_.start());
  driver_.emplace(session_.awaitDriver());
  expectStarted(*driver_);
  daemonLog_->readUntil(" begin ");
}

Window FreeUpSpaceTest::openPanel() {
  chooseInMenu(*driver_, "Free Up Space…");
  return driver_->awaitWindow([](const Window& window) { return window.title == "Free Up Space"; });
}

void FreeUpSpaceTest::pick(const fs::path& folder) {
  openPanel();
  driver_->pickFolder(drive() / folder);
}

void FreeUpSpaceTest::expectQuestion(const std::string& name, int files, const std::string& size) {
  const std::string message = "Remove Downloads in " + name + "?";
  awaitAlert(*driver_, message);
  expectAlert(
      *driver_, message,
      std::to_string(files) + " files using " + size +
          " on this Mac will be removed from local storage. They stay in iCloud and download again "
          "when opened. Files not yet uploaded are left alone.",
      {"Remove Downloads", "Cancel"});
}

void FreeUpSpaceTest::expectNothingToFree(const std::string& name) {
  const std::string message = "Nothing to Free in " + name;
  awaitAlert(*driver_, message);
  expectAlert(*driver_, message, "No downloaded iCloud files were found there.");
}

void FreeUpSpaceTest::expectReport(const std::string& informative) {
  awaitAlert(*driver_, "Freeing Up Space");
  expectAlert(*driver_, "Freeing Up Space", informative);
}

void FreeUpSpaceTest::answer(const std::string& button) {
  const int alert = driver_->awaitAlert().number;
  driver_->press(button);
  driver_->awaitAbsence([alert](const Window& window) { return window.number == alert; });
}

void FreeUpSpaceTest::expectOrderlyEnd() {
  program_->process.signal(SIGTERM);
  EXPECT_EQ(awaitEnd(program_->process), "status 0");
}

std::uint64_t FreeUpSpaceTest::usage(const fs::path& path) const {
  return icloud::bytesOnDisk(drive() / path);
}

std::vector<std::string> FreeUpSpaceTest::evictionLines() {
  std::vector<std::string> found;
  std::istringstream log(program_->log.readSoFar());
  for (std::string line; std::getline(log, line);)
    if (line.starts_with("Driftmark: evicting ") || line.starts_with("Driftmark: evict failed "))
      found.push_back(line);
  return found;
}

void FreeUpSpaceTest::beforeEviction(const std::string& script) const {
  const fs::path brctl = session_.root() / "usr/bin/brctl";
  const fs::path original = brctl.string() + ".original";
  fs::rename(brctl, original);
  session_.writeTool("/usr/bin/brctl", "if [ \"$1\" = evict ]; then\n"
                                       "shift\n" +
                                           script + "\nset -- evict \"$@\"\nfi\nexec '" +
                                           original.string() + "' \"$@\"");
}

} // namespace driftmark::test
