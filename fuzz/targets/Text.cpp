// The helpers for UTF-8, patterns, strings, paths and numbers against plain loops, the regular-
// expression engine and the C library.
//
// The input is a text and also, up to and from the first "|" on, two texts.

#include "Plain.h"
#include "Target.h"
#include "monitor/Patterns.h"
#include "support/KeyedHash.h"
#include "support/Numbers.h"
#include "support/Paths.h"
#include "support/Regex.h"
#include "support/Strings.h"
#include "support/Utf8.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <string>

namespace driftmark::fuzz {

namespace {

std::string repaired(std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) {
    const std::size_t length = plain::sequenceLength(bytes);
    text += length > 0 ? bytes.substr(0, length) : "\ufffd";
    bytes.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return text;
}

/// The place of the first byte from `at` on that is not ASCII, escapes, or is a "." after a "/".
std::size_t firstMark(std::string_view text, std::size_t at) {
  const auto isMark = [&](std::size_t place) {
    const char c = text[place];
    return static_cast<unsigned char>(c) >= 0x80 || c == '\x1b' ||
           (c == '.' && place > 0 && text[place - 1] == '/');
  };
  while (at < text.size() && !isMark(at))
    ++at;
  return at;
}

/// From several places on: the program reads whole words and blocks.
void checkUtf8(std::string_view text) {
  for (std::size_t at = 0; at <= std::min<std::size_t>(text.size(), 40); ++at) {
    const std::string_view bytes = text.substr(at);
    const std::size_t length = plain::sequenceLength(bytes);
    const auto ascii = std::find_if(bytes.begin(), bytes.end(),
                                    [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
    require(isUtf8(bytes) == plain::isUtf8(bytes), "isUtf8");
    require(utf8SequenceLength(bytes) == (length == 1 ? 0 : length), "utf8SequenceLength");
    require(asciiLength(bytes) == static_cast<std::size_t>(ascii - bytes.begin()), "asciiLength");
    require(findMark(text, at) == firstMark(text, at), "findMark");
  }
  require(wellFormed(text) == repaired(text), "wellFormed");
}

void checkPatterns(std::string_view input) {
  static const std::regex percent(percentPattern);
  static const std::regex global(globalPattern);
  const std::string text(input);
  std::string storage;
  require(withoutAnsi(input, storage) == plain::withoutAnsi(input), "withoutAnsi");

  std::smatch match;
  const auto number = firstPercent(text);
  require(number.has_value() == std::regex_search(text, match, percent), "firstPercent");
  if (number)
    require(*number == match.str(1) && number->data() - text.data() == match.position(1),
            "the place of firstPercent");
  const auto report = firstGlobal(text);
  require(report.has_value() == std::regex_search(text, match, global), "firstGlobal");
  if (report)
    require(report->fraction == match.str(1) && report->completed == match.str(2) &&
                report->total == match.str(3) &&
                report->total.data() - text.data() == match.position(3),
            "the groups of firstGlobal");
}

void checkStrings(std::string_view text) {
  require(trimmed(text) == plain::trimmed(text), "trimmed");
  std::string line;
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    std::array<char, 8> hexadecimal{};
    std::snprintf(hexadecimal.data(), hexadecimal.size(), "\\x%02x", code);
    const bool isShown = (code >= 0x20 && code != 0x7f) || c == '\t';
    line += isShown     ? std::string(1, c)
            : c == '\n' ? "\\n"
            : c == '\r' ? "\\r"
                        : hexadecimal.data();
  }
  require(oneLine(text) == line, "oneLine");
}

std::string withoutLastSlashes(std::string path) {
  while (path.size() > 1 && path.ends_with('/'))
    path.pop_back();
  return path;
}

void checkPaths(std::string_view one, std::string_view other) {
  const std::string item = withoutLastSlashes(std::string(one));
  const std::string name = plain::split(item, '/').back();
  const std::string folder = item.substr(0, item.size() - name.size());
  require(withoutTrailingSlashes(one) == item, "withoutTrailingSlashes");
  require(lastPathComponent(one) == (item == "/" ? item : name), "lastPathComponent");
  require(deletingLastPathComponent(one) == withoutLastSlashes(folder),
          "deletingLastPathComponent");
  require(appendingPathComponent(one, other) ==
              std::string(item == "/" ? "" : item).append("/").append(other),
          "appendingPathComponent");
  const std::string inside = std::string(other).append("/").append(one);
  require(other.empty() || abbreviatingWithTilde(inside, other) == "~/" + std::string(one),
          "abbreviatingWithTilde");
  require(abbreviatingWithTilde(one, "") == one, "abbreviatingWithTilde without a home");
}

void checkNumbers(std::string_view one, std::string_view other) {
  const auto number = toDouble(one);
  const auto whole = toInt64(one);
  const auto added = toInt64(other);
  require(number == plain::toDouble(std::string(one)), "toDouble");
  require(whole == plain::toInt64(one), "toInt64");
  if (whole && added) {
    __extension__ const __int128 both = static_cast<__int128>(*whole) + *added;
    using Limits = std::numeric_limits<std::int64_t>;
    const bool isInRange = both >= Limits::min() && both <= Limits::max();
    const auto result = sum(*whole, *added);
    require(result.has_value() == isInRange && (!result || *result == both), "sum");
  }
  if (number && std::abs(*number) < 1e15)
    require(wholeNumber(*number) == (std::signbit(*number) ? "-" : "") +
                                        std::to_string(std::llabs(std::llrint(*number))),
            "wholeNumber");
}

/// The same at another place in memory, which has no byte to spare, and different when a bit
/// differs.
void checkHash(std::string_view text) {
  static const KeyedHash hash(KeyedHash::Key{1, 20, 300, 4000, 50000, 600000});
  const auto copy = std::make_unique<char[]>(text.size() + 1);
  char* const start = copy.get() + 1;
  std::copy(text.begin(), text.end(), start);
  const Fingerprint expected = hash(text);
  const auto isSame = [&] {
    const Fingerprint other = hash({start, text.size()});
    return other.low == expected.low && other.high == expected.high;
  };
  require(isSame(), "the hash of a copy");
  for (std::size_t i = 0; i < text.size(); i += 1 + i / 16) {
    start[i] = static_cast<char>(start[i] ^ 1);
    require(!isSame(), "the hash of another text");
    start[i] = text[i];
  }
}

} // namespace

void check(std::string_view input) {
  const std::size_t bar = std::min(input.find('|'), input.size());
  const std::string_view one = input.substr(0, bar);
  const std::string_view other = input.substr(std::min(bar + 1, input.size()));
  checkUtf8(input);
  checkPatterns(input);
  checkStrings(input);
  checkPaths(one, other);
  checkNumbers(one, other);
  checkHash(input);
}

} // namespace driftmark::fuzz
