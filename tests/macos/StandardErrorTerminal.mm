// How the lines on a terminal are read while the process writes them.

#include "macos/StandardErrorTerminal.h"

#include "platform/posix/SystemCalls.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace driftmark::test {

namespace {

/// Opens the terminal behind `master`, which passes every byte on as it is.
FileDescriptor openRawTerminal(int master) {
  const std::optional<std::string> name = terminalName(master);
  if (grantpt(master) != 0 || unlockpt(master) != 0 || !name)
    return {};
  FileDescriptor terminal(open(name->c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  termios mode{};
  if (tcgetattr(terminal.number(), &mode) != 0)
    return {};
  cfmakeraw(&mode);
  return tcsetattr(terminal.number(), TCSANOW, &mode) == 0 ? std::move(terminal) : FileDescriptor();
}

} // namespace

StandardErrorTerminal::StandardErrorTerminal()
    : master_(openTerminalMaster()), before_(dup(STDERR_FILENO)) {
  const FileDescriptor terminal = openRawTerminal(master_.number());
  if (!before_.isOpen() || dup2(terminal.number(), STDERR_FILENO) < 0)
    throw std::system_error(errno, std::generic_category(), "terminal");
  reader_ = std::thread([this] { read(); });
}

/// The reader ends when nobody has the terminal open any more.
StandardErrorTerminal::~StandardErrorTerminal() {
  dup2(before_.number(), STDERR_FILENO);
  reader_.join();
}

std::vector<std::string> StandardErrorTerminal::lines(std::size_t count) {
  std::unique_lock lock(mutex_);
  grown_.wait_for(lock, std::chrono::minutes(1), [&] { return lines_.size() >= count; });
  std::vector<std::string> lines = lines_;
  lines.resize(std::min(count, lines.size()));
  return lines;
}

void StandardErrorTerminal::read() {
  std::array<char, 4096> buffer{};
  std::string line;
  for (ssize_t size = 1; size > 0;) {
    size = ::read(master_.number(), buffer.data(), buffer.size());
    const std::lock_guard lock(mutex_);
    for (ssize_t at = 0; at < size; ++at) {
      if (const char byte = buffer.at(static_cast<std::size_t>(at)); byte != '\n')
        line += byte;
      else
        lines_.push_back(std::exchange(line, ""));
    }
    grown_.notify_all();
  }
}

} // namespace driftmark::test
