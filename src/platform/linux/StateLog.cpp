#include "platform/linux/StateLog.h"

#include <string>

namespace driftmark {

void StateLog::note(OverallState state) {
  if (last_ == state)
    return;
  last_ = state;
  systemLog_.log(std::string("Driftmark: state -> ").append(name(state)));
}

} // namespace driftmark
