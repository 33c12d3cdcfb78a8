#pragma once

#include "scenario/Action.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace icloud {

/// One line of a scenario, cut into words and quoted texts, and read from left to right. Every
/// operation that finds something else than it asks for throws ScenarioError.
class ScenarioLine {
public:
  ScenarioLine(std::string file, unsigned number, std::string_view text);

  bool atEnd() const { return next_ == tokens_.size(); }
  unsigned number() const { return number_; }

  /// The rest of the line as it was written, comment and outer blanks aside.
  std::string rest() const;

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

  void cut(std::string_view text);
  std::size_t cutQuoted(std::string_view text, std::size_t begin);
  std::size_t cutEscape(std::string_view text, std::size_t at, std::string& into) const;
  const Token& take(const char* what, bool quoted);
  double amount(const Token& token, std::string_view unit, const char* what) const;

  std::string file_;
  unsigned number_;
  std::string source_;
  std::vector<Token> tokens_;
  std::size_t next_ = 0;
};

} // namespace icloud
