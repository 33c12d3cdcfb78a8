#pragma once

#include "common/Record.h"

#include <string>
#include <string_view>
#include <vector>

namespace icloud {

/// The colours of a terminal, or none.
class Style {
public:
  explicit Style(bool inColour) : inColour_(inColour) {}

  bool inColour() const { return inColour_; }
  std::string bold(std::string_view text) const { return wrapped("1", text); }
  std::string dim(std::string_view text) const { return wrapped("2", text); }
  std::string red(std::string_view text) const { return wrapped("1;31", text); }
  std::string green(std::string_view text) const { return wrapped("32", text); }
  std::string blue(std::string_view text) const { return wrapped("38;5;33", text); }

private:
  std::string wrapped(const char* code, std::string_view text) const {
    if (!inColour_)
      return std::string(text);
    return std::string("\x1b[") + code + "m" + std::string(text) + "\x1b[0m";
  }

  bool inColour_;
};

/// The line of a per-item monitor for one item record: path, kind, and a percentage or a state.
std::string itemLine(const Record& record, const Style& style);

/// The lines of a global monitor for one progress record: the full description of the transfer's
/// progress object.
std::vector<std::string> progressLines(const Record& record, const Style& style);

/// The line of a status report for one of the records that the daemon answers with.
std::string statusLine(const Record& record, const Style& style);

} // namespace icloud
