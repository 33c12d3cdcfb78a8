#pragma once

#include <string>
#include <string_view>

namespace driftmark {

/// `text` without the spaces and tabs at both ends.
std::string_view trimmed(std::string_view text);

/// `text` as one line: control characters other than the tab are written as "\n", "\r" or, in
/// hexadecimal, like "\x1b".
std::string oneLine(std::string_view text);

} // namespace driftmark
