#pragma once

namespace driftmark {

/// Which way a transfer moves.
enum class Direction {
  upload,   ///< from this Mac to iCloud
  download, ///< from iCloud to this Mac
};

} // namespace driftmark
