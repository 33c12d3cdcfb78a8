#pragma once

#include <cstdint>

namespace driftmark {

/// What the global feed has heard of lately.
struct GlobalActivity {
  int count = 0;          ///< transfers, at least 1
  std::int64_t bytes = 0; ///< sum of their totals

  bool operator==(const GlobalActivity&) const = default;
};

} // namespace driftmark
