#pragma once

#include <atomic>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace driftmark {

/// What one `brctl status` report confirms.
struct StatusActivity {
  int downloads = 0;                    ///< pending downloads
  int uploads = 0;                      ///< pending uploads
  std::vector<std::string> directories; ///< absolute paths, first seen first, no duplicates

  bool operator==(const StatusActivity&) const = default;
};

/// Reads a whole `brctl status` report. Absent when it names no active job, and when `isCancelled`
/// is true before the end of a long report.
std::optional<StatusActivity> parseStatus(std::string_view text,
                                          const std::atomic<bool>* isCancelled = nullptr);

} // namespace driftmark
