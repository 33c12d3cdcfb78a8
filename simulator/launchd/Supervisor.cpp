// When the daemon is restarted, and when launchd ends with it.
#include "launchd/Supervisor.h"

#include "common/SignalDescriptor.h"
#include "common/SystemFailure.h"
#include "process/Pipe.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>

#include <poll.h>
#include <sys/signalfd.h>
#include <sys/wait.h>

namespace icloud {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds minStartInterval{500};
constexpr std::chrono::seconds shutdownTimeout{5};

} // namespace

Supervisor::Supervisor(const SystemRoot& root, std::vector<std::string> arguments)
    : root_(root), arguments_(std::move(arguments)), signals_(signalDescriptor({SIGTERM, SIGINT})) {
  std::filesystem::remove(root_.birdJournal());
}

int Supervisor::run() {
  while (true) {
    const auto begin = Clock::now();
    start();
    if (watch()) {
      bird_->end(shutdownTimeout);
      return EXIT_SUCCESS;
    }
    const int status = bird_->wait();
    if (!hasServed() && WIFEXITED(status))
      return WEXITSTATUS(status);
    const auto left = std::chrono::ceil<milliseconds>(begin + minStartInterval - Clock::now());
    if (isSignalledWithin(std::max(left, milliseconds(0))))
      return EXIT_SUCCESS;
  }
}

void Supervisor::start() {
  std::vector<std::string> arguments = arguments_;
  if (hasServed())
    arguments.emplace_back("--resume");
  bird_.emplace(Launch{root_.bird(), arguments, {}});
}

bool Supervisor::hasServed() const {
  return std::filesystem::exists(root_.birdJournal());
}

bool Supervisor::isSignalledWithin(milliseconds limit) const {
  return isReadableWithin(signals_.get(), limit);
}

// True after a signal, false when the daemon has ended.
bool Supervisor::watch() {
  std::array<pollfd, 2> waits{{{signals_.get(), POLLIN, 0}, {bird_->exitDescriptor(), POLLIN, 0}}};
  while (poll(waits.data(), waits.size(), -1) < 0)
    continue;
  return waits[0].revents != 0;
}

} // namespace icloud
