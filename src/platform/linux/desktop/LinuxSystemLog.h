#pragma once

#include "ports/SystemLog.h"

namespace driftmark {

/// Writes each line to standard error, with nothing before it and in one go, and to syslog under
/// the name "driftmark". A line stays a line: control characters other than the tab are written as
/// "\n", "\r" or, in hexadecimal, like "\x1b". Syslog gets no more than the first 8000 bytes. What
/// cannot be written is lost; making this object keeps a vanished reader of standard error from
/// ending the process.
class LinuxSystemLog final : public SystemLog {
public:
  LinuxSystemLog();
  LinuxSystemLog(const LinuxSystemLog&) = delete;
  LinuxSystemLog& operator=(const LinuxSystemLog&) = delete;
  ~LinuxSystemLog() override;

  void log(std::string_view line) override;
};

} // namespace driftmark
