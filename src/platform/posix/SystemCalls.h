#pragma once

#include "platform/posix/FileDescriptor.h"

#include <optional>
#include <string>

#include <spawn.h>
#include <sys/types.h>

/// What Linux and macOS do in different ways. Failures leave their reason in `errno`. Any thread.
namespace driftmark::system_calls {

struct Pipe {
  FileDescriptor readEnd;
  FileDescriptor writeEnd;
};

/// Makes reads and writes of `descriptor` return at once. False when the system refuses.
bool setNonBlocking(int descriptor);

/// A pipe whose ends no child inherits.
std::optional<Pipe> makePipe();

/// The master of a new pseudo-terminal, inherited by no child and never the controlling terminal.
FileDescriptor openTerminalMaster();

/// The name of the terminal behind `master`.
std::optional<std::string> terminalName(int master);

/// A descriptor that polls as readable from the moment that the child `pid` has ended.
FileDescriptor watchExit(pid_t pid);

/// Makes a spawned child start with its three standard descriptors only. 0 or an error number.
int closeAllButStandard(posix_spawnattr_t& attributes, posix_spawn_file_actions_t& actions,
                        short& flags);

} // namespace driftmark::system_calls
