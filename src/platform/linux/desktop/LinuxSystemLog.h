#pragma once

#include "ports/SystemLog.h"

namespace driftmark {

/// Writes each line to standard error, without a prefix and in one call, and to syslog under the
/// name "driftmark". Control characters other than the tab are written as "\n", "\r" or, in
/// hexadecimal, like "\x1b", so that a line stays one line. Syslog receives at most the first 8000
/// bytes. What cannot be written is lost. The constructor ignores SIGPIPE: a closed standard error
/// does not end the process.
class LinuxSystemLog final : public SystemLog {
public:
  LinuxSystemLog();
  LinuxSystemLog(const LinuxSystemLog&) = delete;
  LinuxSystemLog& operator=(const LinuxSystemLog&) = delete;
  ~LinuxSystemLog() override;

  void log(std::string_view line) override;
};

} // namespace driftmark
