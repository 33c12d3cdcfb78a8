#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace driftmark {

/// Whether a text is displayed as one line or keeps its lines.
enum class LineBreaks { becomeSpaces, stay };

/// A text from outside as it may be displayed: at most its first `maxCodePoints` code points,
/// well-formed, without the characters that change the direction of writing. A control character
/// becomes U+FFFD; line breaks of every kind become "\n" or a space, and with spaces a tab does,
/// too. Joiners and marks stay.
std::string displayedText(std::string_view text, LineBreaks lineBreaks, std::size_t maxCodePoints);

} // namespace driftmark
