#pragma once

#include "ports/SystemLog.h"

#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <string_view>

/// What the program writes about itself: log lines, and the reason before it aborts.
namespace driftmark {

/// Logs the program's name and the joined parts.
inline void log(SystemLog& systemLog, std::initializer_list<std::string_view> parts) {
  std::string line = "Driftmark: ";
  for (const std::string_view part : parts)
    line += part;
  systemLog.log(line);
}

/// Aborts the program because of an error of its own, after writing `what` to standard error.
[[noreturn]] inline void fatalError(const char* what) {
  std::fputs("Driftmark: fatal error: ", stderr);
  std::fputs(what, stderr);
  std::fputs("\n", stderr);
  std::abort();
}

} // namespace driftmark
