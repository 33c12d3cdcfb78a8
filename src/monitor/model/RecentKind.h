#pragma once

namespace driftmark {

/// What a finished event was.
enum class RecentKind {
  upload,
  download,
  evicted, ///< the local copy was removed; the item is now only in iCloud
};

} // namespace driftmark
