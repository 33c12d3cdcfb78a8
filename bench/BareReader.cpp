// The yardstick for terminals: a loop that only reads.

#include "BareReader.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace driftmark::bench {
namespace {

void require(bool good, const char* what, int error = errno) {
  if (!good)
    throw std::system_error(error, std::generic_category(), what);
}

} // namespace

std::size_t drainTerminal(const std::string& tool) {
  const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  require(master >= 0 && ::grantpt(master) == 0 && ::unlockpt(master) == 0, "pseudo-terminal");
  std::array<char, 64> slave{};
  require(::ptsname_r(master, slave.data(), slave.size()) == 0, "pseudo-terminal");

  posix_spawn_file_actions_t actions{};
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  ::posix_spawn_file_actions_addopen(&actions, 1, slave.data(), O_RDWR | O_NOCTTY, 0);
  ::posix_spawn_file_actions_adddup2(&actions, 1, 2);
  std::string name = tool;
  std::string monitor = "monitor";
  std::string option = "-i";
  std::string container = "com.apple.CloudDocs";
  std::array<char*, 5> arguments{name.data(), monitor.data(), option.data(), container.data(),
                                 nullptr};
  // Keeps the terminal open until the child has opened it.
  const int held = ::open(slave.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  pid_t child = 0;
  const int error =
      ::posix_spawn(&child, tool.c_str(), &actions, nullptr, arguments.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  require(error == 0, "posix_spawn", error);
  ::close(held);

  std::vector<char> buffer(65536);
  std::size_t total = 0;
  for (;;) {
    const ssize_t count = ::read(master, buffer.data(), buffer.size());
    if (count > 0)
      total += static_cast<std::size_t>(count);
    else if (count == 0 || errno != EINTR)
      break;
  }
  ::close(master);
  ::waitpid(child, nullptr, 0);
  return total;
}

} // namespace driftmark::bench
