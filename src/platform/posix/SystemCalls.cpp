// What Linux and macOS do in different ways: pipes, terminals, the exit of a child.

#include "platform/posix/SystemCalls.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#ifdef __APPLE__
#include <sys/event.h>
#else
// The header itself does not declare these as C functions.
extern "C" {
#include <sys/pidfd.h>
}
#endif

namespace driftmark {

bool setNonBlocking(int descriptor) {
  const int flags = fcntl(descriptor, F_GETFL);
  return flags >= 0 && fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) == 0;
}

std::optional<std::string> terminalName(int master) {
  std::array<char, 128> name{};
  if (ptsname_r(master, name.data(), name.size()) != 0)
    return std::nullopt;
  return name.data();
}

#ifdef __APPLE__

namespace {

bool setCloseOnExec(int descriptor) {
  return fcntl(descriptor, F_SETFD, FD_CLOEXEC) == 0;
}

/// The read end of a closed pipe, which is always readable.
FileDescriptor alreadyReadable() {
  std::optional<Pipe> pipe = makePipe();
  return pipe ? std::move(pipe->readEnd) : FileDescriptor();
}

} // namespace

std::optional<Pipe> makePipe() {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0)
    return std::nullopt;
  Pipe result{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
  if (!setCloseOnExec(ends[0]) || !setCloseOnExec(ends[1]))
    return std::nullopt;
  return result;
}

FileDescriptor openTerminalMaster() {
  FileDescriptor master(posix_openpt(O_RDWR | O_NOCTTY));
  if (master.isOpen())
    setCloseOnExec(master.number());
  return master;
}

FileDescriptor watchExit(pid_t pid) {
  FileDescriptor queue(kqueue());
  if (!queue.isOpen() || !setCloseOnExec(queue.number()))
    return {};
  struct kevent change {};
  EV_SET(&change, pid, EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
  if (kevent(queue.number(), &change, 1, nullptr, 0, nullptr) == 0)
    return queue;
  // The system does not watch a child that has already ended.
  return errno == ESRCH ? alreadyReadable() : FileDescriptor();
}

int closeAllButStandard(posix_spawnattr_t& /*attributes*/, posix_spawn_file_actions_t& /*actions*/,
                        short& flags) {
  flags |= POSIX_SPAWN_CLOEXEC_DEFAULT;
  return 0;
}

#else

std::optional<Pipe> makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0)
    return std::nullopt;
  return Pipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

FileDescriptor openTerminalMaster() {
  return FileDescriptor(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
}

FileDescriptor watchExit(pid_t pid) {
  // The kernel makes each of these descriptors close-on-exec.
  return FileDescriptor(pidfd_open(pid, 0));
}

int closeAllButStandard(posix_spawnattr_t& /*attributes*/, posix_spawn_file_actions_t& actions,
                        short& /*flags*/) {
  return posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
}

#endif

} // namespace driftmark
