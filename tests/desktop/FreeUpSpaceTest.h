#pragma once

#include "desktop/Session.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {

/// A session with a drive and its daemon, the program, and a UI driver that frees up space.
class FreeUpSpaceTest : public testing::Test {
protected:
  FreeUpSpaceTest();

  /// Starts a daemon that plays a scenario. The scenario begins when the program starts.
  void startDaemon(const std::string& scenario);

  /// Starts the program and waits until it has read the contents of the drive.
  void startProgram();

  /// Starts both with a scenario in which nothing happens to these files.
  void start(const std::string& files) {
    startDaemon(files + "at 20m end\n");
    startProgram();
  }

  icloud::Window openPanel();

  /// Chooses a folder in the panel. A relative path is below the drive.
  void pick(const std::filesystem::path& folder);

  /// Waits for the question about so many files and checks its whole text.
  void expectQuestion(const std::string& name, int files, const std::string& size);

  void expectNothingToFree(const std::string& name);
  void expectReport(const std::string& informative);

  /// Presses a button of the topmost alert and waits until the alert is closed.
  void answer(const std::string& button);

  void expectOrderlyEnd();

  std::filesystem::path drive() const {
    return session_.home() / "Library/Mobile Documents/com~apple~CloudDocs";
  }

  /// The bytes that the files at a path of the drive use on disk.
  std::uint64_t usage(const std::filesystem::path& path = {}) const;

  /// The lines about evictions in the log so far.
  std::vector<std::string> evictionLines();

  /// Runs a shell script before each eviction by `brctl`; `$1` is the path.
  void beforeEviction(const std::string& script) const;

  Session session_;
  std::optional<Channel> daemonLog_;
  std::optional<icloud::ChildProcess> supervisor_;
  std::optional<RunningProgram> program_;
  std::optional<icloud::UiDriver> driver_;
};

} // namespace driftmark::test
