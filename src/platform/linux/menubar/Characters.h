#pragma once

#include <cstddef>
#include <string>

namespace driftmark {

/// The first `count` user-perceived characters of `text`: a letter with its marks, a flag or an
/// emoji of several parts is one. Bytes that are not UTF-8 come out as U+FFFD when there is
/// something to cut. Any thread.
std::string firstCharacters(const std::string& text, std::size_t count);

} // namespace driftmark
