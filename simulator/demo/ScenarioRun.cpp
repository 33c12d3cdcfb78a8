// How the processes of a run start, and what is passed on of them.

#include "demo/ScenarioRun.h"

#include "common/SignalDescriptor.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <limits>

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace icloud {
namespace {

int pollTimeout(std::optional<std::chrono::milliseconds> timeout) {
  constexpr long most = std::numeric_limits<int>::max();
  return timeout ? static_cast<int>(std::clamp<long>(timeout->count(), 0, most)) : -1;
}

} // namespace

ScenarioRun::ScenarioRun(const std::filesystem::path& tools, const std::filesystem::path& scenario,
                         Listener& listener)
    : listener_(listener), file_(std::filesystem::absolute(scenario)),
      scenario_(readScenario(scenario)), sandbox_(tools),
      signals_(signalDescriptor({SIGINT, SIGTERM, SIGHUP})) {
  adoptOrphans();
  desktopLines_ = LineReader(sandbox_.openedFiles(),
                             [this](const std::string& line) { listener_.desktopPrinted(line); });
}

void ScenarioRun::startBird() {
  Pipe pipe = makePipe();
  birdLines_ = LineReader(std::move(pipe.reading),
                          [this](const std::string& line) { listener_.birdPrinted(line); });
  Launch launch{sandbox_.root().launchd(),
                {"--home", sandbox_.home(), "--scenario", file_, "--begin-after",
                 "items,global,status,quota"},
                {}};
  launch.output = pipe.writing.get();
  launchd_.emplace(launch);
}

void ScenarioRun::startProgram(const std::filesystem::path& program, Screen screen,
                               const std::optional<std::filesystem::path>& screenshots) {
  Pipe pipe = makePipe();
  programLines_ = LineReader(std::move(pipe.reading),
                             [this](const std::string& line) { listener_.programPrinted(line); });
  Launch launch = sandbox_.programLaunch(program, screen, scenario_.stallAfter);
  launch.output = launch.error = pipe.writing.get();
  if (!scenario_.user.empty() && screen == Screen::memory) {
    user_ = std::make_unique<ScenarioUser>(
        sandbox_.folder(),
        UserContext{.screenshots = screenshots.value_or(sandbox_.temporary()),
                    .drive = sandbox_.drive(),
                    .brctl = sandbox_.root().brctl()},
        scenario_.user);
    launch.environment.merge(user_->environment());
  }
  program_.emplace(launch);
}

// Reads what a child wrote before it reports that the child ended.
bool ScenarioRun::waitForInput(std::optional<std::chrono::milliseconds> timeout) {
  std::array<pollfd, 7> waits{
      {{signals_.get(), POLLIN, 0},
       {birdLines_.descriptor(), POLLIN, 0},
       {programLines_.descriptor(), POLLIN, 0},
       {user_ ? user_->descriptor() : -1, POLLIN, 0},
       {desktopLines_.descriptor(), POLLIN, 0},
       {programRuns() ? program_->exitDescriptor() : -1, POLLIN, 0},
       {launchd_->hasEnded() ? -1 : launchd_->exitDescriptor(), POLLIN, 0}}};
  const auto& [signals, bird, program, user, desktop, programExit, launchdExit] = waits;
  const int ready = poll(waits.data(), waits.size(), pollTimeout(timeout));
  if (ready <= 0)
    return ready < 0;
  if (signals.revents != 0)
    readSignal();
  if (bird.revents != 0)
    birdLines_.read();
  if (program.revents != 0)
    programLines_.read();
  if (user.revents != 0)
    listener_.userHasReports();
  if (desktop.revents != 0)
    desktopLines_.read();
  if (programExit.revents != 0) {
    programLines_.finish();
    listener_.programEnded();
  } else if (launchdExit.revents != 0 && bird.revents == 0) {
    listener_.launchdEnded();
  }
  return true;
}

int ScenarioRun::endProgram(std::chrono::milliseconds gracePeriod) {
  const int status = program_->end(gracePeriod);
  programLines_.finish();
  return status;
}

void ScenarioRun::readSignal() {
  signalfd_siginfo info{};
  if (read(signals_.get(), &info, sizeof info) == sizeof info)
    interruption_ = static_cast<int>(info.ssi_signo);
}

} // namespace icloud
