#pragma once

#include <string>
#include <string_view>

namespace driftmark {

/// `bytes` with U+FFFD in the place of every byte that belongs to no well-formed UTF-8 sequence.
std::string wellFormed(std::string_view bytes);

/// `text` as one line: control characters other than the tab are written as "\n", "\r" or, in
/// hexadecimal, like "\x1b".
std::string oneLine(std::string_view text);

} // namespace driftmark
