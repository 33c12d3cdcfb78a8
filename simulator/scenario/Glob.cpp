// How a text is compared with a pattern that has wildcards.

#include "scenario/Glob.h"

#include <optional>

namespace icloud {
namespace {

struct Piece {
  enum class Kind { byte, anyByte, anyBytes };
  Kind kind = Kind::byte;
  char byte = 0;
  std::size_t length = 1;
};

Piece pieceAt(std::string_view pattern, std::size_t position) {
  const char c = pattern[position];
  if (c == '*')
    return {Piece::Kind::anyBytes};
  if (c == '?')
    return {Piece::Kind::anyByte};
  if (c == '\\' && position + 1 < pattern.size())
    return {Piece::Kind::byte, pattern[position + 1], 2};
  return {Piece::Kind::byte, c};
}

} // namespace

bool matchesGlob(std::string_view pattern, std::string_view text) {
  struct Star {
    std::size_t patternAfter;
    std::size_t textAt;
  };
  std::optional<Star> star; // the latest "*"; after a mismatch, it takes one more byte
  std::size_t inPattern = 0;
  std::size_t inText = 0;
  while (true) {
    if (inPattern < pattern.size()) {
      const Piece piece = pieceAt(pattern, inPattern);
      if (piece.kind == Piece::Kind::anyBytes) {
        inPattern += piece.length;
        star = Star{inPattern, inText};
        continue;
      }
      if (inText < text.size() &&
          (piece.kind == Piece::Kind::anyByte || piece.byte == text[inText])) {
        inPattern += piece.length;
        ++inText;
        continue;
      }
    } else if (inText == text.size()) {
      return true;
    }
    if (!star || star->textAt == text.size())
      return false;
    inPattern = star->patternAfter;
    inText = ++star->textAt;
  }
}

} // namespace icloud
