#pragma once

#include "monitor/model/RecentKind.h"
#include "ports/Clock.h"

#include <string>

namespace driftmark {

/// One entry of the recent list.
struct CompletedItem {
  std::string path; ///< absolute
  RecentKind kind = RecentKind::upload;
  Date date{}; ///< when the monitor recorded it
};

} // namespace driftmark
