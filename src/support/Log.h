#pragma once

#include "ports/SystemLog.h"

#include <atomic>
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

/// Called with the reason before `fatalError` aborts the program, on any thread. Null: the reason
/// is written to standard error.
inline std::atomic<void (*)(const char* what)> onFatalError = nullptr;

/// Aborts the program because of an error of its own.
[[noreturn]] inline void fatalError(const char* what) {
  if (auto* const handler = onFatalError.load())
    handler(what);
  else
    std::fprintf(stderr, "Driftmark: fatal error: %s\n", what);
  std::abort();
}

} // namespace driftmark
