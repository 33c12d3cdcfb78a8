// Which words of a shell command are names of commands.
#include "sh/CommandText.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace icloud {
namespace {

constexpr std::string_view blanks = " \t";
constexpr std::string_view separators = ";&|()\n`";
constexpr std::string_view redirections = "<>";

// A command follows these words.
constexpr std::array<std::string_view, 14> wordsBeforeCommands{
    "if",   "then",  "else", "elif", "do",      "while", "until",
    "time", "nohup", "exec", "env",  "command", "!",     "{"};

bool isIn(std::string_view set, char character) {
  return set.find(character) != std::string_view::npos;
}

bool isAssignment(const std::string& word) {
  const auto equals = word.find('=');
  return equals != std::string::npos && equals > 0 &&
         std::all_of(word.begin(), word.begin() + static_cast<std::ptrdiff_t>(equals),
                     [](unsigned char each) { return std::isalnum(each) != 0 || each == '_'; });
}

class CommandRewriter {
public:
  CommandRewriter(std::string_view text, const Renaming& renamed)
      : text_(text), renamed_(renamed) {}

  std::string result() {
    while (position_ < text_.size())
      step();
    return std::move(result_);
  }

private:
  void step() {
    const char next = text_[position_];
    if (isIn(blanks, next)) {
      copy(1);
    } else if (isIn(separators, next)) {
      copy(1);
      expectsCommand_ = true;
    } else if (isIn(redirections, next)) {
      copy(1);
      expectsTarget_ = true;
      if (position_ < text_.size() && isIn("&>|", text_[position_]))
        copy(1);
    } else if (next == '#') {
      copy(std::min(text_.find('\n', position_), text_.size()) - position_);
    } else {
      takeWord(wordLength());
    }
  }

  void copy(std::size_t count) {
    result_ += text_.substr(position_, count);
    position_ += count;
  }

  /// The length up to the blank or separator after the word, with quoted parts.
  std::size_t wordLength() const {
    std::size_t end = position_;
    while (end < text_.size() && !isIn(blanks, text_[end]) && !isIn(separators, text_[end]) &&
           !isIn(redirections, text_[end]))
      end = afterUnit(end);
    return std::min(end, text_.size()) - position_;
  }

  /// The position after one character, an escaped character or a quotation.
  std::size_t afterUnit(std::size_t at) const {
    if (text_[at] == '\\')
      return at + 2;
    if (text_[at] == '\'') {
      const auto close = text_.find('\'', at + 1);
      return close == std::string_view::npos ? text_.size() : close + 1;
    }
    if (text_[at] != '"')
      return at + 1;
    for (++at; at < text_.size() && text_[at] != '"'; ++at)
      if (text_[at] == '\\')
        ++at;
    return at + 1;
  }

  void takeWord(std::size_t length) {
    const std::string word(text_.substr(position_, length));
    position_ += length;
    if (expectsTarget_) {
      expectsTarget_ = false;
      result_ += word;
      return;
    }
    if (expectsCommand_ && word.front() == '/' && word.find_first_of("'\"\\$*?[") == word.npos) {
      const std::string name = renamed_(word);
      result_ += name == word ? word : shellQuoted(name);
    } else {
      result_ += word;
    }
    const bool precedesCommand = std::find(wordsBeforeCommands.begin(), wordsBeforeCommands.end(),
                                           word) != wordsBeforeCommands.end();
    expectsCommand_ = expectsCommand_ && (precedesCommand || isAssignment(word));
  }

  std::string_view text_;
  const Renaming& renamed_;
  std::size_t position_ = 0;
  std::string result_;
  bool expectsCommand_ = true;
  bool expectsTarget_ = false; ///< the file of a redirection
};

} // namespace

std::string withCommandsRenamed(std::string_view text, const Renaming& renamed) {
  return CommandRewriter(text, renamed).result();
}

std::string shellQuoted(std::string_view text) {
  std::string quoted = "'";
  for (const char each : text)
    if (each == '\'')
      quoted += "'\\''";
    else
      quoted += each;
  quoted += '\'';
  return quoted;
}

} // namespace icloud
