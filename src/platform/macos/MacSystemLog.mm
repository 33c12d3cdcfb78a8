#include "platform/macos/MacAdapters.h"
#include "platform/macos/Strings.h"
#include "support/Strings.h"

#include <csignal>

namespace driftmark {

MacSystemLog::MacSystemLog() {
  std::signal(SIGPIPE, SIG_IGN);
}

void MacSystemLog::log(std::string_view line) {
  @autoreleasepool {
    NSLog(@"%@", nsString(oneLine(line)));
  }
}

} // namespace driftmark
