// Loaded into a program before the C library. When the program opens a folder inside another one
// and the name begins with HOLD_PREFIX, it writes a byte into the pipe HOLD_REACHED and then waits
// for a byte from the pipe HOLD_GO.

#include <cerrno>
#include <cstdlib>
#include <string_view>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

bool isHeld(std::string_view name) {
  const char* const prefix = std::getenv("HOLD_PREFIX");
  return prefix != nullptr && name.starts_with(prefix);
}

/// Moves one byte through a pipe.
void pass(const char* variable, int mode, ssize_t (*move)(int)) {
  const char* const pipe = std::getenv(variable);
  const int end = pipe != nullptr ? open(pipe, mode | O_CLOEXEC) : -1;
  while (end >= 0 && move(end) < 0 && errno == EINTR) {
  }
  close(end);
}

ssize_t put(int pipe) {
  return write(pipe, "r", 1);
}

ssize_t take(int pipe) {
  char byte = 0;
  return read(pipe, &byte, 1);
}

} // namespace

/// Replaces the C library's function. The mode is used only when a file is created.
extern "C" int openOrWait(int folder, const char* name, int flags, mode_t mode) __asm__("openat");

extern "C" int openOrWait(int folder, const char* name, int flags, mode_t mode) {
  if ((flags & O_DIRECTORY) != 0 && isHeld(name)) {
    pass("HOLD_REACHED", O_WRONLY, put);
    pass("HOLD_GO", O_RDONLY, take);
  }
  return static_cast<int>(syscall(SYS_openat, folder, name, flags, mode));
}
