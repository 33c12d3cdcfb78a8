// How a pseudo-terminal is opened, and what fails at which stage.

#include "platform/posix/SystemCalls.h"
#include "platform/posix/SystemErrors.h"
#include "platform/posix/children/TerminalChannel.h"

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <string>

#include <fcntl.h>

namespace driftmark {

namespace {

std::optional<std::string> slaveName(int master) {
  if (grantpt(master) != 0 || unlockpt(master) != 0)
    return std::nullopt;
  return terminalName(master);
}

} // namespace

std::variant<Terminal, LaunchError> Terminal::open() {
  using Stage = LaunchError::Stage;
  FileDescriptor master = openTerminalMaster();
  if (!master.isOpen())
    return launchError(Stage::allocateTerminal, errno);

  const std::optional<std::string> name = slaveName(master.number());
  if (!name) {
    const LaunchError error = launchError(Stage::allocateTerminal, errno);
    // Required behaviour: a master that could not be unlocked stays open for good.
    master.release();
    return error;
  }

  FileDescriptor slave(::open(name->c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  if (!slave.isOpen() || !setNonBlocking(master.number()))
    return launchError(Stage::openTerminal, errno);
  return Terminal{std::move(master), std::move(slave)};
}

} // namespace driftmark
