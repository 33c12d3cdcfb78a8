#pragma once

#include "scenario/Action.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace icloud {

/// One line of a scenario, split into words and quoted texts, and read from left to right. Every
/// operation that finds an unexpected token throws ScenarioError.
class ScenarioLine {
public:
  ScenarioLine(std::string file, unsigned number, std::string_view text);

  bool atEnd() const { return next_ == tokens_.size(); }
  unsigned number() const { return number_; }

  /// What is left of the line, as written, without the comment and outer blanks.
  std::string remainder() const;

  /// Takes the next word when it is `word`.
  bool accept(std::string_view word);
  void require(std::string_view word);
  void requireEnd() const;

  std::string word(const char* what);
  std::string quoted(const char* what);
  std::uint64_t count(const char* what);
  double percent();
  Milliseconds duration(const char* what); ///< "1.5s", "250ms" or "2m"
  std::uint64_t size();                    ///< "120KB", "4.2MB", "1GB" or plain bytes
  bool nextIsSize() const;

  [[noreturn]] void fail(const std::string& message) const;

private:
  struct Token {
    std::string text;
    bool quoted = false;
    std::size_t begin = 0;
  };

  void split(std::string_view text);
  std::size_t splitQuoted(std::string_view text, std::size_t begin);
  std::size_t readEscape(std::string_view text, std::size_t at, std::string& into) const;
  const Token& take(const char* what, bool quoted);
  double amount(const Token& token, std::string_view unit, const char* what) const;

  std::string file_;
  unsigned number_;
  std::string source_;
  std::vector<Token> tokens_;
  std::size_t next_ = 0;
};

} // namespace icloud
