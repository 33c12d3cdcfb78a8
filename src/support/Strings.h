#pragma once

#include "support/KeyedHash.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace driftmark {

/// Hashes strings for containers that are searched by `std::string_view` too.
struct StringHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const { return hash(text).low; }

  KeyedHash hash;
};

/// `text` without the spaces and tabs at both ends.
std::string_view trimmed(std::string_view text);

/// `text` without its terminal colour sequences: an escape character, "[", digits and semicolons,
/// "m". The result is `text` itself when there is none; otherwise it refers to `storage`.
std::string_view withoutAnsi(std::string_view text, std::string& storage);

/// Empties a text that is only a place to work in, and gives the memory of an exceptional one back.
inline void clearScratch(std::string& text) {
  constexpr std::size_t maxKeptCapacity = 4096;
  if (text.capacity() > maxKeptCapacity)
    std::string().swap(text);
  text.clear();
}

/// `text` as one line: control characters other than the tab are written as "\n", "\r" or, in
/// hexadecimal, like "\x1b".
std::string oneLine(std::string_view text);

} // namespace driftmark
