#pragma once

#include "monitor/model/OverallState.h"
#include "platform/SystemLog.h"

#include <optional>

namespace driftmark {

/// Logs the overall state each time that it is another one than before. Main thread.
class StateLog {
public:
  explicit StateLog(SystemLog& systemLog) : systemLog_(systemLog) {}

  void note(OverallState state);

private:
  SystemLog& systemLog_;
  std::optional<OverallState> last_;
};

} // namespace driftmark
