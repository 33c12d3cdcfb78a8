#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace driftmark {

/// Reads a whole `brctl quota` report: the remaining storage in bytes. Absent when the report does
/// not begin with a number.
std::optional<std::int64_t> parseQuota(std::string_view text);

} // namespace driftmark
