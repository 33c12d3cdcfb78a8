#pragma once

#include <string_view>

namespace icloud {

/// Whether the whole of `text` matches `pattern`, in which "*" stands for any bytes, "?" for one
/// byte, and a backslash takes the special meaning from what follows it.
bool matchesGlob(std::string_view pattern, std::string_view text);

} // namespace icloud
