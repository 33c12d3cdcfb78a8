#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace driftmark::fuzz::plain {

/// What a manifest needs of a JSON value.
struct Json {
  enum class Kind { null, text, object, other };
  Kind kind = Kind::other;
  std::string text;
  std::map<std::string, Json> members;
};

/// Reads a document as RFC 8259 has it, with the limits that it allows: a byte order mark is
/// skipped, the last of equal keys counts, and a number beyond a double's range is refused.
std::optional<Json> readJson(std::string_view document);

} // namespace driftmark::fuzz::plain
