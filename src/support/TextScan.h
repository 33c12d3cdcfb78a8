#pragma once

#include <cstddef>
#include <string_view>

namespace driftmark {

/// Whether `bytes` are well-formed UTF-8 as Unicode defines it: no overlong forms, no surrogates,
/// nothing beyond U+10FFFF. A NUL is well-formed.
bool isUtf8(std::string_view bytes);

/// The length of the well-formed UTF-8 sequence of two to four bytes at the front of `bytes`; 0
/// when there is none.
std::size_t utf8SequenceLength(std::string_view bytes);

/// The length of the front of `bytes` that is ASCII.
std::size_t asciiLength(std::string_view bytes);

/// The length of the front of `bytes` that is ASCII without the escape character.
std::size_t unescapedLength(std::string_view bytes);

/// The length of the front of `bytes` that is ASCII without the escape character and "/".
std::size_t plainNameLength(std::string_view bytes);

} // namespace driftmark
