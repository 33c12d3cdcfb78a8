#pragma once

#include <string>
#include <vector>

namespace driftmark {

/// What one `brctl status` report confirms.
struct StatusActivity {
  int downloads = 0;                    ///< pending downloads
  int uploads = 0;                      ///< pending uploads
  std::vector<std::string> directories; ///< absolute paths, first seen first, no duplicates

  bool operator==(const StatusActivity&) const = default;
};

} // namespace driftmark
