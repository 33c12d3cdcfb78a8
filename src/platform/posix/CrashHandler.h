#pragma once

#include "ports/SystemLog.h"

#include <exception>

namespace driftmark {

/// As long as this object lives, a crash of this process first kills its children, except the
/// detached ones. The reason of a fatal error or of an uncaught exception then goes to the system
/// log; the system itself reports the signals of a crash. After that the process ends as it would
/// without this object. Main thread; one exists at a time.
class CrashHandler {
public:
  /// The log outlives this object.
  explicit CrashHandler(SystemLog& systemLog);
  CrashHandler(const CrashHandler&) = delete;
  CrashHandler& operator=(const CrashHandler&) = delete;
  ~CrashHandler();
};

} // namespace driftmark
