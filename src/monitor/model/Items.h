#pragma once

#include "ports/Clock.h"

#include <optional>
#include <string>

namespace driftmark {

/// The direction of a transfer.
enum class Direction {
  upload,   ///< from this Mac to iCloud
  download, ///< from iCloud to this Mac
};

/// One transfer in flight.
struct ActiveItem {
  std::string path; ///< absolute; the key under which the item is kept
  Direction direction = Direction::upload;
  std::optional<double> percent; ///< 0 to 100; absent when the latest progress line had none
  Date lastUpdate{}; ///< of the latest progress line, even if the percentage was the same
};

/// What a finished event was.
enum class RecentKind {
  upload,
  download,
  evicted, ///< the local copy was removed; the item is now only in iCloud
};

/// One entry of the recent list.
struct CompletedItem {
  std::string path; ///< absolute
  RecentKind kind = RecentKind::upload;
  Date date{}; ///< when the monitor recorded it
};

} // namespace driftmark
