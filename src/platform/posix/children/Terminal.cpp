#include "platform/posix/children/Terminal.h"

#include "platform/posix/SystemCalls.h"
#include "platform/posix/SystemError.h"

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
  return system_calls::terminalName(master);
}

} // namespace

std::variant<Terminal, LaunchError> Terminal::open() {
  using Stage = LaunchError::Stage;
  FileDescriptor master = system_calls::openTerminalMaster();
  if (!master.isOpen())
    return systemError(Stage::allocateTerminal, errno);

  const std::optional<std::string> name = slaveName(master.number());
  if (!name) {
    const LaunchError error = systemError(Stage::allocateTerminal, errno);
    // Required behaviour: a master that did not become usable is left open for good.
    master.release();
    return error;
  }

  FileDescriptor slave(::open(name->c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  if (!slave.isOpen() || !system_calls::setNonBlocking(master.number()))
    return systemError(Stage::openTerminal, errno);
  return Terminal{std::move(master), std::move(slave)};
}

} // namespace driftmark
