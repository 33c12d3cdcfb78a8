#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Rules of the program once more, in their plainest form.
namespace driftmark::fuzz::plain {

/// The length of the well-formed UTF-8 sequence of one to four bytes at the start of `bytes`; 0
/// when there is none.
std::size_t sequenceLength(std::string_view bytes);

bool isUtf8(std::string_view bytes);

/// Without the colour sequences that the regular-expression engine finds.
std::string withoutAnsi(std::string_view text);

/// Without the spaces and tabs at both ends.
std::string trimmed(std::string_view text);

/// The pieces between the `separator`s, empty ones included.
std::vector<std::string> split(std::string_view text, char separator);

/// The number that all of `text` spells.
std::optional<std::int64_t> toInt64(std::string_view text);
std::optional<double> toDouble(const std::string& text);

} // namespace driftmark::fuzz::plain
