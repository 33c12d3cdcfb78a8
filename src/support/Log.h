#pragma once

#include "ports/SystemLog.h"

#include <initializer_list>
#include <string>
#include <string_view>

namespace driftmark {

/// Logs the program's name and the joined parts.
inline void log(SystemLog& systemLog, std::initializer_list<std::string_view> parts) {
  std::string line = "Driftmark: ";
  for (const std::string_view part : parts)
    line += part;
  systemLog.log(line);
}

} // namespace driftmark
