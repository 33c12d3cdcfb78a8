#include "platform/linux/LinuxSystemLog.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string>

#include <syslog.h>
#include <unistd.h>

namespace driftmark {

namespace {

constexpr std::size_t longestSyslogLine = 8000;

bool isControl(char byte) {
  const auto code = static_cast<unsigned char>(byte);
  return (code < 0x20 && byte != '\t') || code == 0x7f;
}

void appendEscaped(std::string& text, char byte) {
  constexpr std::string_view hexDigits = "0123456789abcdef";
  const auto code = static_cast<unsigned char>(byte);
  if (byte == '\n')
    text += "\\n";
  else if (byte == '\r')
    text += "\\r";
  else
    text.append("\\x") += {hexDigits[code >> 4U], hexDigits[code & 0xfU]};
}

std::string oneLine(std::string_view line) {
  std::string text;
  text.reserve(line.size() + 1);
  for (const char byte : line) {
    if (isControl(byte))
      appendEscaped(text, byte);
    else
      text += byte;
  }
  return text;
}

/// Writes all of `text`, in one call unless the system takes it in parts.
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
  syslog(LOG_NOTICE, "%.*s", static_cast<int>(std::min(text.size(), longestSyslogLine)),
         text.data());
  text += '\n';
  writeToStandardError(text);
}

} // namespace driftmark
