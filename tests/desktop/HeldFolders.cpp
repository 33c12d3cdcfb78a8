#include "desktop/HeldFolders.h"

#include "common/SystemFailure.h"
#include "harness/BuiltFiles.h"
#include "process/ChildProcess.h"
#include "process/Pipe.h"

#include <array>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace driftmark::test {

namespace {

constexpr std::chrono::seconds patience{30};

/// Open for both ways, so that nobody who opens it waits and it does not end between two visitors.
icloud::Descriptor makePipeAt(const std::filesystem::path& path) {
  if (mkfifo(path.c_str(), S_IRUSR | S_IWUSR) != 0)
    icloud::throwSystemFailure("cannot make " + path.string());
  icloud::Descriptor pipe(open(path.c_str(), O_RDWR | O_CLOEXEC));
  if (!pipe)
    icloud::throwSystemFailure("cannot open " + path.string());
  return pipe;
}

/// What sanitizers are told already, and that they need not be the first library of the program.
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

void HeldFolders::awaitVisitor() {
  if (!icloud::isReadableWithin(reached_.get(), patience))
    throw std::runtime_error("nobody walks into the folder");
  takeVisitor();
}

bool HeldFolders::awaitVisitorOrEnd(const icloud::ChildProcess& program) {
  std::array<pollfd, 2> waits{{{reached_.get(), POLLIN, 0}, {program.exitDescriptor(), POLLIN, 0}}};
  const auto limit = std::chrono::milliseconds(patience).count();
  if (poll(waits.data(), waits.size(), static_cast<int>(limit)) <= 0)
    throw std::runtime_error("the program neither walks on nor ends");
  if ((waits[0].revents & POLLIN) == 0)
    return false;
  takeVisitor();
  return true;
}

void HeldFolders::takeVisitor() {
  char byte = 0;
  if (read(reached_.get(), &byte, 1) != 1)
    icloud::throwSystemFailure("cannot read who walks");
}

void HeldFolders::letOneIn() {
  if (write(go_.get(), "g", 1) != 1)
    icloud::throwSystemFailure("cannot let anybody in");
}

} // namespace driftmark::test
