#pragma once

#include "platform/posix/FileDescriptor.h"

#include <optional>
#include <string>

#include <spawn.h>
#include <sys/types.h>

/// The calls for descriptors, terminals and children that Linux and macOS do in different ways. A
/// failure leaves its reason in `errno`. Any thread.
namespace driftmark {

struct Pipe {
  FileDescriptor readEnd;
  FileDescriptor writeEnd;
};

/// Makes reads and writes of `descriptor` return at once. False when the system refuses.
bool setNonBlocking(int descriptor);

/// A pipe. No child inherits its ends.
std::optional<Pipe> makePipe();

/// The master of a new pseudo-terminal. No child inherits it, and it never becomes the controlling
/// terminal.
FileDescriptor openTerminalMaster();

/// The name of the terminal behind `master`.
std::optional<std::string> terminalName(int master);

/// A descriptor that becomes readable when the child `pid` ends, and stays so.
FileDescriptor watchExit(pid_t pid);

/// Makes a spawned child start with its three standard descriptors only. Returns 0 or an error
/// number.
int closeAllButStandard(posix_spawnattr_t& attributes, posix_spawn_file_actions_t& actions,
                        short& flags);

} // namespace driftmark
