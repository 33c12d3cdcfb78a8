// How a test stops a program in the middle of a walk through folders.

#include "desktop/HeldFolders.h"

#include "common/SystemFailure.h"
#include "harness/BuiltFiles.h"
#include "harness/Waiting.h"
#include "process/ChildProcess.h"

#include <array>
#include <cstdlib>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace driftmark::test {

namespace {

/// Open for reading and writing, so that opening it does not block and it does not end between two
/// writers.
icloud::Descriptor makePipeAt(const std::filesystem::path& path) {
  if (mkfifo(path.c_str(), S_IRUSR | S_IWUSR) != 0)
    icloud::throwSystemFailure("cannot make " + path.string());
  icloud::Descriptor pipe(open(path.c_str(), O_RDWR | O_CLOEXEC));
  if (!pipe)
    icloud::throwSystemFailure("cannot open " + path.string());
  return pipe;
}

/// The options of the sanitizer, which need not be the first library of the program.
std::string sanitizerOptions() {
  const char* const options = std::getenv("ASAN_OPTIONS");
  return (options != nullptr ? std::string(options) + ":" : "") + "verify_asan_link_order=0";
}

} // namespace

HeldFolders::HeldFolders(Session& session, const std::string& prefix)
    : reached_(makePipeAt(session.folder() / "reached")), go_(makePipeAt(session.folder() / "go")) {
  session.setVariable("LD_PRELOAD", holdFoldersLibrary());
  session.setVariable("ASAN_OPTIONS", sanitizerOptions());
  session.setVariable("HOLD_PREFIX", prefix);
  session.setVariable("HOLD_REACHED", session.folder() / "reached");
  session.setVariable("HOLD_GO", session.folder() / "go");
}

void HeldFolders::awaitOpening() {
  awaitReadable(reached_.get(), "a program to open a held folder");
  takeOpening();
}

bool HeldFolders::awaitOpeningOrExit(const icloud::ChildProcess& program) {
  std::array<pollfd, 2> waits{{{reached_.get(), POLLIN, 0}, {program.exitDescriptor(), POLLIN, 0}}};
  const auto limit = std::chrono::milliseconds(maxWait).count();
  if (poll(waits.data(), waits.size(), static_cast<int>(limit)) <= 0)
    throw TimedOut("a program to open a held folder or to end");
  if ((waits[0].revents & POLLIN) == 0)
    return false;
  takeOpening();
  return true;
}

void HeldFolders::takeOpening() {
  char byte = 0;
  if (read(reached_.get(), &byte, 1) != 1)
    icloud::throwSystemFailure("cannot read the pipe");
}

void HeldFolders::releaseOne() {
  if (write(go_.get(), "g", 1) != 1)
    icloud::throwSystemFailure("cannot write to the pipe");
}

} // namespace driftmark::test
