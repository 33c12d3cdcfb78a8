// How fast a listing passes through a real pseudo-terminal into the program.

#include "BareReader.h"
#include "BenchPlatform.h"
#include "Benches.h"
#include "Corpus.h"
#include "Stopwatch.h"
#include "monitor/SyncMonitor.h"
#include "platform/linux/runloop/LinuxMainQueue.h"
#include "platform/posix/children/PosixChildProcesses.h"
#include "replay/CaptureRoot.h"

#include <ostream>
#include <stdexcept>
#include <vector>

#include <QCoreApplication>

namespace driftmark::bench {
namespace {

constexpr std::size_t listedPaths = 300'000;
constexpr std::size_t rounds = 9;

/// Starts a real process for the per-item monitor only. When it exits, the event loop ends.
class ItemMonitorOnly : public BenchChildProcesses {
public:
  explicit ItemMonitorOnly(ChildProcesses& children) : children_(children) {}

  std::variant<TerminalChild, LaunchError> spawn(const ToolCommand& command, DataHandler onData,
                                                 ExitHandler onExit) override {
    if (command.arguments.size() < 2 || command.arguments[1] != "-i")
      return BenchChildProcesses::spawn(command, std::move(onData), std::move(onExit));
    auto started = children_.spawn(command, std::move(onData), [] { QCoreApplication::quit(); });
    if (const auto* error = std::get_if<LaunchError>(&started))
      throw std::runtime_error("cannot start the listing: " + error->description);
    return started;
  }

private:
  ChildProcesses& children_;
};

/// A listing, and a `brctl` that prints it.
class PlayedListing {
public:
  PlayedListing() {
    const Corpus listing = makeListing(listedPaths, "\n");
    // The terminal adds a carriage return before each newline.
    printedBytes_ = listing.bytes.size() + listing.lines;
    root_.playText(listing.bytes);
  }

  const CaptureRoot& root() const { return root_; }
  std::size_t printedBytes() const { return printedBytes_; }

private:
  CaptureRoot root_;
  std::size_t printedBytes_ = 0;
};

double drainTime(const PlayedListing& listing) {
  std::size_t bytes = 0;
  const double time = seconds([&] { bytes = drainTerminal(listing.root().brctl().string()); });
  if (bytes != listing.printedBytes())
    throw std::runtime_error("the terminal gave the wrong number of bytes");
  return time;
}

double programTime(const PlayedListing& listing) {
  BenchPlatform platform;
  LinuxMainQueue mainQueue;
  PosixChildProcesses processes(mainQueue, listing.root().path().string());
  ItemMonitorOnly children(processes);
  const SyncMonitor::Ports ports{
      platform.clock, mainQueue,     platform.backgroundQueue, children,
      platform.log,   platform.disk, platform.environment,     platform.text};
  const auto monitor = SyncMonitor::make(ports);
  std::size_t changes = 0;
  monitor->onChange = [&changes] { ++changes; };
  const double time = seconds([&] {
    monitor->start();
    QCoreApplication::exec();
  });
  if (monitor->tally().lines != listedPaths)
    throw std::runtime_error("the program read the wrong number of lines");
  return time;
}

} // namespace

void benchTerminal(Figures& figures, std::ostream& notes) {
  const PlayedListing listing;
  std::vector<double> drain;
  std::vector<double> program;
  drainTime(listing);
  programTime(listing);
  for (std::size_t round = 0; round < rounds; ++round) {
    drain.push_back(drainTime(listing));
    program.push_back(programTime(listing));
  }
  figures["pty_speed_over_drain"] = median(drain) / median(program);

  const auto speed = [&](const std::vector<double>& times) {
    return static_cast<double>(listing.printedBytes()) / median(times) / 1e6;
  };
  notes << "terminal: " << listedPaths << " lines, bare loop " << speed(drain) << " MB/s, program "
        << speed(program) << " MB/s\n";
}

} // namespace driftmark::bench
