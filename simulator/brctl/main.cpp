// How `brctl` carries out each of its commands.
#include "brctl/BirdLink.h"
#include "brctl/BrctlCommand.h"
#include "brctl/Monitor.h"
#include "brctl/OutputLines.h"
#include "brctl/TextOutput.h"
#include "common/Requests.h"
#include "common/UsageError.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <sysexits.h>
#include <unistd.h>

#ifdef __SANITIZE_ADDRESS__
/// The leak checker is a process of its own, which a signal to this one would leave behind.
extern "C" int __lsan_is_turned_off() { // NOLINT(bugprone-reserved-identifier)
  return 1;
}
#endif

namespace {

using namespace icloud;

void printStatus(BirdLink& bird, TextOutput& output) {
  const Style style(output.isTerminal());
  for (Record record = bird.await(); record.at(0) != "done"; record = bird.await())
    output.line(statusLine(record, style));
}

// Reports on standard error, in a line for each path, what failed and why; false when anything did.
bool carryOut(const SystemRoot& root, std::string_view request,
              const std::vector<std::string>& paths) {
  bool succeeded = true;
  for (const std::string& path : paths) {
    try {
      const std::string absolute = std::filesystem::current_path() / path;
      BirdLink(root, {request, absolute}).await();
    } catch (const std::exception& problem) {
      std::fprintf(stderr, "brctl: %s: %s\n", path.c_str(), problem.what());
      succeeded = false;
    }
  }
  return succeeded;
}

int run(const Command& command, const SystemRoot& root, TextOutput& output) {
  switch (command.kind) {
  case Command::Kind::help:
    output.raw(Command::usage());
    break;
  case Command::Kind::monitorItems: {
    BirdLink bird(root, {itemsRequest, command.container});
    Monitor(bird, output).showItems(command.container);
  }
  case Command::Kind::monitorGlobal: {
    BirdLink bird(root, {globalRequest});
    Monitor(bird, output).showProgress();
  }
  case Command::Kind::status: {
    BirdLink bird(root, {statusRequest});
    printStatus(bird, output);
    break;
  }
  case Command::Kind::quota: {
    BirdLink bird(root, {quotaRequest});
    output.line(bird.await().at(1) + " bytes of quota remaining in personal account");
    break;
  }
  case Command::Kind::evict:
    return carryOut(root, evictRequest, command.paths) ? EX_OK : EXIT_FAILURE;
  case Command::Kind::download:
    return carryOut(root, downloadRequest, command.paths) ? EX_OK : EXIT_FAILURE;
  }
  output.flush();
  return EX_OK;
}

} // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  try {
    TextOutput output(STDOUT_FILENO);
    return run(Command::from({argv + 1, argv + argc}), SystemRoot::ofThisProgram(), output);
  } catch (const OutputClosed&) {
    return EX_IOERR;
  } catch (const UsageError& error) {
    std::fprintf(stderr, "brctl: %s\n%s", error.what(), Command::usage());
    return EX_USAGE;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "brctl: %s\n", error.what());
    return EX_UNAVAILABLE;
  }
}
