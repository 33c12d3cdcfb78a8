// How tests run a tool and keep what it writes.

#include "harness/RunToEnd.h"

#include "harness/Channel.h"
#include "harness/Waiting.h"

#include <sys/mman.h>
#include <sys/wait.h>

namespace driftmark::test {

namespace {

/// A file without a name takes any amount of text, while a pipe has to be read at the same time.
std::string contentsOf(const icloud::Descriptor& file) {
  std::string text(static_cast<std::size_t>(lseek(file.get(), 0, SEEK_END)), '\0');
  const ssize_t count = pread(file.get(), text.data(), text.size(), 0);
  text.resize(static_cast<std::size_t>(count));
  return text;
}

} // namespace

Finished runToEnd(icloud::Launch launch) {
  Channel output = Channel::pipe();
  const icloud::Descriptor error(memfd_create("standard-error", MFD_CLOEXEC));
  launch.output = output.childEnd();
  launch.error = error.get();
  icloud::ChildProcess process(launch);
  Finished finished;
  finished.output = output.readToEnd();
  const int status = awaitExit(process);
  finished.error = contentsOf(error);
  finished.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return finished;
}

} // namespace driftmark::test
