#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace driftmark {

/// Whether `bytes` are well-formed UTF-8 as Unicode defines it: no overlong forms, no surrogates,
/// nothing beyond U+10FFFF. A NUL is well-formed.
bool isUtf8(std::string_view bytes);

/// `bytes` with every byte that belongs to no well-formed UTF-8 sequence replaced by U+FFFD.
std::string wellFormed(std::string_view bytes);

/// The length of the well-formed UTF-8 sequence of two to four bytes at the start of `bytes`; 0
/// when there is none.
std::size_t utf8SequenceLength(std::string_view bytes);

/// How many bytes at the start of `bytes` are ASCII.
std::size_t asciiLength(std::string_view bytes);

/// How many bytes at the start of `bytes` are ASCII, and neither the escape character nor a "/"
/// that a "." follows: what needs a closer look in a line with paths and colours.
std::size_t plainLength(std::string_view bytes);

} // namespace driftmark
