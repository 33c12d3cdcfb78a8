// What of a line is a name, and what takes its place.

#include "replay/Anonymiser.h"

#include "monitor/ItemLine.h"
#include "support/Utf8.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <vector>

namespace driftmark {
namespace {

/// Names that the program or Apple gave, and that say nothing about a user.
constexpr std::array<std::string_view, 3> commonNames{"com~apple~CloudDocs", ".Trash", ".DS_Store"};

/// What the program looks for in a name.
constexpr std::array<std::string_view, 3> marks{"\u2601", "\u2191", "\u2193"};

/// A line without its colour sequences, and the place of each byte in the line.
struct PlainLine {
  explicit PlainLine(std::string_view line) {
    for (std::size_t at = 0; at < line.size(); ++at) {
      if (const std::size_t length = sequenceLength(line.substr(at)); length > 0) {
        at += length - 1;
        continue;
      }
      text += line[at];
      places.push_back(at);
    }
  }

  /// The length of the colour sequence at the start of `text`; 0 when there is none.
  static std::size_t sequenceLength(std::string_view text) {
    if (!text.starts_with("\x1b["))
      return 0;
    const std::size_t end = text.find_first_not_of("0123456789;", 2);
    const bool isSequence =
        end != std::string_view::npos && ((text[end] | 0x20) >= 'a') && ((text[end] | 0x20) <= 'z');
    return isSequence ? end + 1 : 0;
  }

  std::string text;
  std::vector<std::size_t> places;
};

/// The path of an item, or else what may be a path: from a slash that begins a word to the end.
std::string_view pathIn(std::string_view line) {
  std::string unused;
  if (const ItemLine item = readItemLine(line, unused); !item.path.empty())
    return item.path;
  for (std::size_t at = line.find('/'); at != std::string_view::npos; at = line.find('/', at + 1))
    if (line.substr(at + 1).find_first_of(" \r") != 0 && at + 1 < line.size())
      return line.substr(at);
  return {};
}

char32_t decoded(std::string_view sequence) {
  const auto first = static_cast<unsigned char>(sequence[0]);
  char32_t code = first & (0xffU >> (sequence.size() + 1));
  for (const char byte : sequence.substr(1))
    code = code << 6U | (static_cast<unsigned char>(byte) & 0x3fU);
  return code;
}

void append(std::string& text, char32_t code, std::size_t size) {
  constexpr std::array<unsigned, 5> leads{0, 0, 0xc0, 0xe0, 0xf0};
  text += static_cast<char>(leads.at(size) | code >> (6 * (size - 1)));
  for (std::size_t left = size - 1; left > 0; --left)
    text += static_cast<char>(0x80U | (code >> (6 * (left - 1)) & 0x3fU));
}

/// Control characters, spaces and punctuation beyond ASCII.
bool isKept(std::string_view sequence) {
  const char32_t code = decoded(sequence);
  return code < 0xc0 || (code >= 0x2000 && code < 0x2070) || code == 0x3000 ||
         std::ranges::find(marks, sequence) != marks.end();
}

} // namespace

std::string Anonymiser::anonymised(std::string_view line) {
  const PlainLine plain(line);
  std::string result(line);
  const std::string_view path = pathIn(plain.text);
  auto place = plain.places.begin() + (path.empty() ? 0 : path.data() - plain.text.data());
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = std::min(path.find('/', begin), path.size());
    for (const char byte : replacementOf(path.substr(begin, end - begin)))
      result[*place++] = byte;
    if (end < path.size())
      ++place; // the slash
    begin = end + 1;
  }
  return result;
}

std::string Anonymiser::replacementOf(std::string_view name) {
  if (std::ranges::find(commonNames, name) != commonNames.end())
    return std::string(name);
  if (const auto found = replacements_.find(name); found != replacements_.end())
    return found->second;
  constexpr int attempts = 100'000; // a name of one letter may be the last of 26
  for (int attempt = 0; attempt < attempts; ++attempt) {
    std::string other = drawn(name);
    if (taken_.insert(other).second) {
      replacements_.emplace(name, other);
      return other;
    }
  }
  throw std::runtime_error("has too many short names to replace them");
}

std::string Anonymiser::drawn(std::string_view name) {
  constexpr std::string_view trash = ".Trash";
  std::string other(name.starts_with(trash) ? trash : "");
  for (std::size_t at = other.size(); at < name.size();) {
    const char byte = name[at];
    const std::size_t size = utf8SequenceLength(name.substr(at));
    if (byte >= 'a' && byte <= 'z')
      other += static_cast<char>(draw('a', 'z'));
    else if (byte >= 'A' && byte <= 'Z')
      other += static_cast<char>(draw('A', 'Z'));
    else if (byte >= '0' && byte <= '9')
      other += static_cast<char>(draw('0', '9'));
    else if (size < 2 || isKept(name.substr(at, size)))
      other.append(name.substr(at, std::max<std::size_t>(size, 1)));
    else if (size == 2)
      append(other, draw(0x3b1, 0x3c9), size); // Greek
    else if (size == 3)
      append(other, draw(0x4e00, 0x9fa5), size); // Han
    else
      append(other, draw(0x1f300, 0x1f5ff), size); // pictures
    at += std::max<std::size_t>(size, 1);
  }
  return other;
}

/// Not by a distribution, whose results differ between libraries.
char32_t Anonymiser::draw(char32_t first, char32_t last) {
  return first + static_cast<char32_t>(random_() % (last - first + 1));
}

} // namespace driftmark
