// How a line of a scenario is split into tokens, and how tokens are read.
#include "scenario/ScenarioLine.h"

#include "scenario/Scenario.h"

#include <array>
#include <charconv>
#include <cmath>
#include <optional>

namespace icloud {
namespace {

struct Unit {
  std::string_view name;
  double factor;
};

constexpr std::array<Unit, 3> durationUnits{{{"ms", 1}, {"s", 1000}, {"m", 60'000}}};
constexpr std::array<Unit, 5> sizeUnits{{{"KB", 1e3}, {"MB", 1e6}, {"GB", 1e9}, {"B", 1}, {"", 1}}};
constexpr double maxAmount = 1e15;
constexpr double maxDuration = 24 * 3600 * 1000.0;

bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

std::optional<double> decimal(std::string_view text) {
  if (text.empty() || text.front() < '0' || text.front() > '9')
    return std::nullopt;
  double value = 0;
  const auto parsed =
      std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
  if (parsed.ec != std::errc{} || parsed.ptr != text.data() + text.size() || value > maxAmount)
    return std::nullopt;
  return value;
}

template <std::size_t count>
std::optional<double> measured(std::string_view text, const std::array<Unit, count>& units) {
  for (const Unit& unit : units) {
    if (!text.ends_with(unit.name))
      continue;
    if (const auto value = decimal(text.substr(0, text.size() - unit.name.size())))
      return *value * unit.factor;
  }
  return std::nullopt;
}

} // namespace

ScenarioLine::ScenarioLine(std::string file, unsigned number, std::string_view text)
    : file_(std::move(file)), number_(number) {
  split(text);
}

void ScenarioLine::fail(const std::string& message) const {
  throw ScenarioError(file_, number_, message);
}

void ScenarioLine::split(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && text[at] != '#') {
    if (isBlank(text[at])) {
      ++at;
    } else if (text[at] == '"') {
      at = splitQuoted(text, at);
    } else {
      const std::size_t begin = at;
      while (at < text.size() && !isBlank(text[at]) && text[at] != '#' && text[at] != '"')
        ++at;
      tokens_.push_back({std::string(text.substr(begin, at - begin)), false, begin});
    }
  }
  source_ = text.substr(0, at);
  while (!source_.empty() && isBlank(source_.back()))
    source_.pop_back();
}

std::size_t ScenarioLine::splitQuoted(std::string_view text, std::size_t begin) {
  Token token{{}, true, begin};
  for (std::size_t at = begin + 1; at < text.size(); ++at) {
    if (text[at] == '"') {
      tokens_.push_back(std::move(token));
      return at + 1;
    }
    if (text[at] == '\\')
      at = readEscape(text, at, token.text);
    else
      token.text += text[at];
  }
  fail("a quoted text has no closing quote");
}

std::size_t ScenarioLine::readEscape(std::string_view text, std::size_t at,
                                     std::string& into) const {
  const std::string_view escape = text.substr(at + 1);
  const char kind = escape.empty() ? '\0' : escape.front();
  if (kind == '"' || kind == '\\') {
    into += kind;
  } else if (kind == 'n') {
    into += '\n';
  } else if (kind == 'r') {
    into += '\r';
  } else if (kind == 'e') {
    into += '\x1b';
  } else if (kind == 'x' && escape.size() >= 3) {
    unsigned value = 0;
    const auto parsed = std::from_chars(escape.data() + 1, escape.data() + 3, value, 16);
    if (parsed.ec != std::errc{} || parsed.ptr != escape.data() + 3)
      fail("\\x is followed by two hexadecimal digits");
    into += static_cast<char>(value);
    return at + 3;
  } else {
    fail("a backslash is followed by one of \" \\ n r e or x and two digits");
  }
  return at + 1;
}

std::string ScenarioLine::remainder() const {
  return atEnd() ? std::string() : source_.substr(tokens_[next_].begin);
}

bool ScenarioLine::accept(std::string_view word) {
  if (atEnd() || tokens_[next_].quoted || tokens_[next_].text != word)
    return false;
  ++next_;
  return true;
}

void ScenarioLine::require(std::string_view word) {
  if (!accept(word))
    fail("expected \"" + std::string(word) + "\"" +
         (atEnd() ? " at the end" : " at " + remainder()));
}

void ScenarioLine::requireEnd() const {
  if (!atEnd())
    fail("nothing more was expected here: " + remainder());
}

const ScenarioLine::Token& ScenarioLine::take(const char* what, bool quoted) {
  if (atEnd())
    fail(std::string("expected ") + what + " at the end");
  if (tokens_[next_].quoted != quoted)
    fail(std::string("expected ") + what + (quoted ? " in quotes" : " without quotes") + " at " +
         remainder());
  return tokens_[next_++];
}

std::string ScenarioLine::word(const char* what) {
  return take(what, false).text;
}

std::string ScenarioLine::quoted(const char* what) {
  return take(what, true).text;
}

double ScenarioLine::amount(const Token& token, std::string_view unit, const char* what) const {
  const std::string_view text = token.text;
  if (text.ends_with(unit))
    if (const auto value = decimal(text.substr(0, text.size() - unit.size())))
      return *value;
  fail("not " + std::string(what) + ": " + token.text);
}

std::uint64_t ScenarioLine::count(const char* what) {
  const double value = amount(take(what, false), "", what);
  if (value != std::floor(value))
    fail(std::string("expected ") + what + " without a fraction");
  return static_cast<std::uint64_t>(value);
}

double ScenarioLine::percent() {
  const double value = amount(take("a percentage", false), "%", "a percentage");
  if (value > 100)
    fail("more than 100%");
  return value;
}

Milliseconds ScenarioLine::duration(const char* what) {
  const Token& token = take(what, false);
  const auto value = measured(token.text, durationUnits);
  if (!value || *value > maxDuration)
    fail("not " + std::string(what) + " such as 1.5s, 250ms or 2m: " + token.text);
  return Milliseconds(std::llround(*value));
}

std::uint64_t ScenarioLine::size() {
  const Token& token = take("a size", false);
  const auto value = measured(token.text, sizeUnits);
  if (!value || *value > maxAmount)
    fail("not a size such as 120KB, 4.2MB or 1GB: " + token.text);
  return static_cast<std::uint64_t>(std::llround(*value));
}

bool ScenarioLine::nextIsSize() const {
  return !atEnd() && !tokens_[next_].quoted && measured(tokens_[next_].text, sizeUnits);
}

} // namespace icloud
