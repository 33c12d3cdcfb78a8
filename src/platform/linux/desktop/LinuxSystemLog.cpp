// How a log line is written to standard error and to syslog.

#include "platform/linux/desktop/LinuxAdapters.h"
#include "support/Strings.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string>

#include <syslog.h>
#include <unistd.h>

namespace driftmark {

namespace {

constexpr std::size_t maxSyslogLine = 8000;

/// Writes all of `text`, in one call unless the system accepts only a part.
void writeToStandardError(std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(STDERR_FILENO, text.data(), text.size());
    if (count >= 0)
      text.remove_prefix(static_cast<std::size_t>(count));
    else if (errno != EINTR)
      return;
  }
}

} // namespace

LinuxSystemLog::LinuxSystemLog() {
  std::signal(SIGPIPE, SIG_IGN);
  openlog("driftmark", LOG_PID, LOG_USER);
}

LinuxSystemLog::~LinuxSystemLog() {
  closelog();
}

void LinuxSystemLog::log(std::string_view line) {
  std::string text = oneLine(line);
  syslog(LOG_NOTICE, "%.*s", static_cast<int>(std::min(text.size(), maxSyslogLine)), text.data());
  text += '\n';
  writeToStandardError(text);
}

} // namespace driftmark
