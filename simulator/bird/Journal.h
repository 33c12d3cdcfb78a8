#pragma once

#include "bird/Progress.h"

#include <filesystem>
#include <set>
#include <string>

namespace icloud {

/// What the daemon has to know when it goes on after a restart.
struct JournalEntry {
  Progress progress;
  std::set<std::string> beginAfter; ///< requests that are to be served before the story begins

  bool operator==(const JournalEntry&) const = default;
};

/// The file with the daemon's latest entry, whole at every moment.
class Journal {
public:
  /// Makes the folder of the file when it is not there.
  explicit Journal(std::filesystem::path file);

  /// Throws std::runtime_error when there is no entry that can be read.
  JournalEntry read() const;

  /// Puts an entry in place of the one before, unless they are the same. Throws std::runtime_error.
  void write(const JournalEntry& entry);

private:
  std::filesystem::path file_;
  std::string written_;
};

} // namespace icloud
