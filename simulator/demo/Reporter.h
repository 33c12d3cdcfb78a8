#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace icloud {

/// Prints what happens, with the time since this object was made, and writes it to files when there
/// is a folder for them.
class Reporter {
public:
  explicit Reporter(const std::optional<std::filesystem::path>& folder);

  /// Text without a time.
  void message(const std::string& text);

  /// Something that happened in iCloud.
  void event(const std::string& text);

  /// A line that the program logged.
  void log(const std::string& line);

  /// Something that the scenario's user did or observed.
  void user(const std::string& text);

  /// What an open menu shows, in several lines.
  void menu(const std::string& text);

  /// The comparison with the scenario, at the end.
  void summary(const std::string& text);

  const std::vector<std::string>& logLines() const { return logLines_; }

  /// The times of the log lines, as they were printed.
  const std::vector<std::string>& logTimes() const { return logTimes_; }

private:
  enum class Style { normal, dim };

  std::string time() const;
  void print(const std::string& text, Style style);

  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  bool isTerminal_;
  std::vector<std::string> logLines_;
  std::vector<std::string> logTimes_;
  std::ofstream logFile_;
  std::ofstream transcriptFile_;
  std::ofstream summaryFile_;
  std::ofstream menusFile_;
};

} // namespace icloud
