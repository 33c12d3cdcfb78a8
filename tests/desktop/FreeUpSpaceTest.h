#pragma once

#include "desktop/Session.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {

/// A session with a drive in it, the program before it, and a user who frees up space.
class FreeUpSpaceTest : public testing::Test {
protected:
  FreeUpSpaceTest();

  /// Lets a daemon keep a drive that is as the scenario says; the story begins with the program.
  void play(const std::string& scenario);

  /// Starts the program, and waits until it has read what the drive holds.
  void startProgram();

  /// Both, and nothing happens in the story.
  void start(const std::string& stage) {
    play(stage + "at 20m end\n");
    startProgram();
  }

  icloud::Window openPanel();

  /// Chooses a folder: in the drive where the path is relative.
  void pick(const std::filesystem::path& folder);

  /// Waits for the question about so many files, and checks its every word.
  void expectQuestion(const std::string& name, int files, const std::string& size);

  void expectNothingToFree(const std::string& name);
  void expectReport(const std::string& informative);

  /// Answers the alert in front, and waits until it has gone.
  void answer(const std::string& button);

  void expectOrderlyEnd();

  std::filesystem::path drive() const {
    return session_.home() / "Library/Mobile Documents/com~apple~CloudDocs";
  }

  /// What the files at a path of the drive take up on disk.
  std::uint64_t usage(const std::filesystem::path& path = {}) const;

  /// The lines of the log so far about evictions, which the program asks for.
  std::vector<std::string> evictionLines();

  /// Puts a shell script before `brctl`, for its evictions; `$1` is the path.
  void beforeEviction(const std::string& script) const;

  Session session_;
  std::optional<Channel> told_; ///< what the daemon tells
  std::optional<icloud::ChildProcess> supervisor_;
  std::optional<Program> program_;
  std::optional<icloud::UiDriver> driver_;
};

} // namespace driftmark::test
