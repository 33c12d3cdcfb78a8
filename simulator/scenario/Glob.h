#pragma once

#include <string_view>

namespace icloud {

/// Whether the whole of `text` matches `pattern`. In a pattern, "*" stands for any bytes and "?"
/// for one byte. A backslash removes the special meaning of the character after it.
bool matchesGlob(std::string_view pattern, std::string_view text);

} // namespace icloud
