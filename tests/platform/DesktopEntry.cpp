#include "DesktopEntry.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace driftmark::test {

namespace {

constexpr const char* group = "[Desktop Entry]";
// Not allowed in a command outside quotes.
constexpr const char* reserved = "\t\n\"'\\><~|&;$*?#()`";

[[noreturn]] void fail(const std::string& what, const std::string& where) {
  throw std::runtime_error(what + ": " + where);
}

std::string resolved(const std::string& value) {
  static const std::map<char, char> escapes{
      {'s', ' '}, {'n', '\n'}, {'t', '\t'}, {'r', '\r'}, {'\\', '\\'}};
  std::string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] != '\\') {
      text += value[i];
      continue;
    }
    const auto escape = ++i < value.size() ? escapes.find(value[i]) : escapes.end();
    if (escape == escapes.end())
      fail("no such escape", value);
    text += escape->second;
  }
  return text;
}

/// Reads a quoted word that starts at `at`, and moves `at` behind it.
std::string quotedWord(const std::string& line, std::size_t& at) {
  std::string word;
  for (++at; at < line.size() && line[at] != '"'; ++at) {
    const bool isEscape = line[at] == '\\';
    if (isEscape)
      ++at;
    const bool needsEscape = at < line.size() && std::string("\"`$\\").find(line[at]) != line.npos;
    if (isEscape != needsEscape)
      fail("wrongly escaped", line);
    word += line[at];
  }
  if (at == line.size())
    fail("the quote does not end", line);
  ++at;
  return word;
}

std::string plainWord(const std::string& line, std::size_t& at) {
  const std::size_t end = std::min(line.find(' ', at), line.size());
  std::string word = line.substr(at, end - at);
  if (word.find_first_of(reserved) != std::string::npos)
    fail("not quoted", line);
  at = end;
  return word;
}

std::string withoutFieldCodes(const std::string& word) {
  std::string text;
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (word[i] == '%' && (++i == word.size() || word[i] != '%'))
      fail("a field code", word);
    text += word[i];
  }
  return text;
}

} // namespace

DesktopEntry::DesktopEntry(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string line;
  if (!std::getline(stream, line) || line != group)
    fail("not an entry", line);
  while (std::getline(stream, line)) {
    const std::size_t equals = line.find('=');
    const std::string key = line.substr(0, equals);
    if (equals == std::string::npos || key.empty() || key.find(' ') != std::string::npos)
      fail("not a key and a value", line);
    if (!values_.emplace(key, line.substr(equals + 1)).second)
      fail("a key comes twice", line);
  }
}

const std::string& DesktopEntry::raw(const std::string& key) const {
  const auto value = values_.find(key);
  if (value == values_.end())
    fail("no such key", key);
  return value->second;
}

std::string DesktopEntry::string(const std::string& key) const {
  return resolved(raw(key));
}

std::vector<std::string> DesktopEntry::command() const {
  const std::string line = string("Exec");
  std::vector<std::string> words;
  for (std::size_t at = 0; at < line.size();) {
    words.push_back(
        withoutFieldCodes(line[at] == '"' ? quotedWord(line, at) : plainWord(line, at)));
    if (at < line.size() && line[at++] != ' ')
      fail("no space after a word", line);
  }
  return words;
}

} // namespace driftmark::test
