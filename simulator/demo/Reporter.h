#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace icloud {

/// Shows the story while it happens, with the time since it was begun to be shown, and keeps it in
/// files when there is a folder for them.
class Reporter {
public:
  explicit Reporter(const std::optional<std::filesystem::path>& folder);

  /// Text of the demo's own.
  void say(const std::string& text);

  /// Something that happened in iCloud.
  void cloud(const std::string& text);

  /// A line that the program logged.
  void log(const std::string& line);

  /// Something that the user at the screen did or saw.
  void user(const std::string& text);

  /// What an open menu shows, in several lines.
  void menu(const std::string& text);

  /// The closing words.
  void summary(const std::string& text);

  const std::vector<std::string>& logLines() const { return logLines_; }

  /// When each of them came, as it was shown.
  const std::vector<std::string>& logTimes() const { return logTimes_; }

private:
  std::string time() const;
  void show(const std::string& text, bool quiet);

  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  bool inColour_;
  std::vector<std::string> logLines_;
  std::vector<std::string> logTimes_;
  std::ofstream logFile_;
  std::ofstream storyFile_;
  std::ofstream summaryFile_;
  std::ofstream menusFile_;
};

} // namespace icloud
