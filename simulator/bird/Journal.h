#pragma once

#include "scenario/Action.h"

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <set>
#include <string>

namespace icloud {

/// How far a scenario has come, in terms that a later process understands too: the clock is the
/// machine's.
struct Progress {
  using Clock = std::chrono::steady_clock;

  std::optional<Clock::time_point> origin; ///< absent: the scenario has not begun
  std::optional<Milliseconds> waitingAt;   ///< where the scenario's clock is stopped
  std::size_t nextStep = 0;                ///< the first step that has not run

  bool operator==(const Progress&) const = default;
};

/// What a restarted daemon cannot read from the drive itself.
struct JournalEntry {
  Progress progress;
  std::set<std::string> beginAfter; ///< requests still to be served before the scenario begins

  bool operator==(const JournalEntry&) const = default;
};

/// The file with the daemon's latest entry, complete at every moment.
class Journal {
public:
  /// Creates the folder of the file if necessary.
  explicit Journal(std::filesystem::path file);

  /// Throws std::runtime_error when there is no valid entry.
  JournalEntry read() const;

  /// Replaces the entry, unless it is unchanged. Throws std::runtime_error.
  void write(const JournalEntry& entry);

private:
  std::filesystem::path file_;
  std::optional<JournalEntry> written_;
};

} // namespace icloud
