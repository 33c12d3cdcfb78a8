#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace driftmark {

/// What one line of the global monitor reports. It tells the size of a transfer, but neither its
/// file nor its direction.
struct GlobalLine {
  std::int64_t total = 0; ///< bytes, at least 1
  bool isFinished = false;
};

/// Reads a line without its newline. Absent when it reports no transfer, or is not UTF-8.
std::optional<GlobalLine> readGlobalLine(std::string_view line);

} // namespace driftmark
