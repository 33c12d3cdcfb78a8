// How a program runs for a long time, and when its figures are taken.

#include "soak/Soak.h"

#include "common/SignalDescriptor.h"
#include "soak/Judgement.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <exception>
#include <utility>

#include <poll.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

namespace driftmark::soak {
namespace {

using icloud::Pipe;
using icloud::ProcessHoldings;

constexpr std::chrono::milliseconds sampleInterval{250};
constexpr std::chrono::seconds interval{10};
constexpr std::size_t steadySamples = 8; ///< two seconds
constexpr std::size_t maxLastLines = 20;
constexpr std::chrono::seconds gracePeriod{15};

/// The first check for updates, 30 seconds after the start, loads the network libraries.
constexpr std::chrono::seconds minWarmUp{40};

std::size_t intervalsOfWarmUp(std::chrono::seconds duration) {
  return static_cast<std::size_t>(std::max(minWarmUp, duration / 4) / interval);
}

void printRow(const std::string& title, const ProcessHoldings& figures, const std::string& more) {
  std::printf("%-14s %7.1f MiB  %4zu descriptors  %3zu threads  %3zu children%s\n", title.c_str(),
              static_cast<double>(figures.memory) / 1024, figures.descriptors, figures.threads,
              figures.children, more.c_str());
  std::fflush(stdout);
}

} // namespace

Soak::Soak(const Options& options)
    : options_(options), scenario_(icloud::readScenario(options.scenario)), sandbox_(options.tools),
      signals_(icloud::signalDescriptor({SIGINT, SIGTERM, SIGHUP})) {}

int Soak::run() {
  icloud::adoptOrphans();
  startBird();
  while (!isOver_ && interruption_ == 0)
    waitForInput();
  endProgram();
  return interruption_ != 0 ? 128 + interruption_ : report();
}

void Soak::startBird() {
  Pipe pipe = icloud::makePipe();
  birdLines_ = icloud::LineReader(std::move(pipe.reading),
                                  [this](const std::string& line) { handleBirdLine(line); });
  icloud::Launch launch{sandbox_.root().launchd(),
                        {"--home", sandbox_.home(), "--scenario",
                         std::filesystem::absolute(options_.scenario), "--begin-after",
                         "items,global,status,quota"},
                        {}};
  launch.output = pipe.writing.get();
  launchd_.emplace(launch);
}

void Soak::startProgram() {
  Pipe pipe = icloud::makePipe();
  programLines_ = icloud::LineReader(std::move(pipe.reading),
                                     [this](const std::string& line) { handleProgramLine(line); });
  icloud::Launch launch =
      sandbox_.programLaunch(options_.program, icloud::Screen::memory, scenario_.stallAfter);
  launch.output = launch.error = pipe.writing.get();
  user_ = std::make_unique<icloud::ScenarioUser>(
      sandbox_.folder(),
      icloud::UserContext{.screenshots = sandbox_.temporary(),
                          .drive = sandbox_.drive(),
                          .brctl = sandbox_.root().brctl()},
      scenario_.user);
  launch.environment.merge(user_->environment());
  program_.emplace(launch);
  begin_ = intervalBegin_ = nextSample_ = Clock::now();
}

void Soak::handleBirdLine(const std::string& line) {
  if (line.find(" ready") != std::string::npos && !program_)
    startProgram();
  else if (line.find(" trouble ") != std::string::npos)
    fail("a step of the scenario failed: " + line);
}

void Soak::handleProgramLine(const std::string& line) {
  lastLines_.push_back(line);
  if (lastLines_.size() > maxLastLines)
    lastLines_.pop_front();
}

void Soak::handleUserReports() {
  for (const auto& report : user_->takeReports())
    if (report.kind == icloud::ScenarioUser::Report::Kind::failure)
      fail(report.text);
}

void Soak::waitForInput() {
  std::array<pollfd, 6> waits{{{signals_.get(), POLLIN, 0},
                               {birdLines_.descriptor(), POLLIN, 0},
                               {programLines_.descriptor(), POLLIN, 0},
                               {user_ ? user_->descriptor() : -1, POLLIN, 0},
                               {program_ ? program_->exitDescriptor() : -1, POLLIN, 0},
                               {launchd_->exitDescriptor(), POLLIN, 0}}};
  const auto& [signals, bird, program, user, programExit, launchdExit] = waits;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(nextSample_ - Clock::now());
  const auto timeout = std::clamp<long>(left.count(), 0, sampleInterval.count());
  poll(waits.data(), waits.size(), static_cast<int>(timeout));
  if (signals.revents != 0)
    readSignal();
  if (bird.revents != 0)
    birdLines_.read();
  if (program.revents != 0)
    programLines_.read();
  if (user.revents != 0)
    handleUserReports();
  if (programExit.revents != 0)
    fail("the program ended by itself, with " + icloud::describeEnd(program_->wait()));
  else if (launchdExit.revents != 0)
    fail("bird ended by itself, with " + icloud::describeEnd(launchd_->wait()));
  else if (Clock::now() >= nextSample_)
    takeSample();
}

void Soak::readSignal() {
  signalfd_siginfo info{};
  if (read(signals_.get(), &info, sizeof info) == sizeof info)
    interruption_ = static_cast<int>(info.ssi_signo);
}

void Soak::takeSample() {
  const auto now = Clock::now();
  nextSample_ = now + sampleInterval;
  try {
    samples_.push_back(icloud::holdingsOf(program_->identifier()));
    if (now >= intervalBegin_ + interval)
      endInterval(now);
  } catch (const std::exception&) {
    return; // the program has ended; its descriptor reports it next
  }
  isOver_ = isOver_ || figures_.size() * interval >= options_.duration;
}

void Soak::endInterval(Clock::time_point now) {
  const pid_t process = program_->identifier();
  const auto time = icloud::processorTime(process);
  const std::uint64_t bytes = icloud::bytesRead(process);
  const std::chrono::duration<double> length = now - intervalBegin_;
  figures_.push_back(figuresOf(samples_, steadySamples));
  std::array<char, 64> more{};
  std::snprintf(more.data(), more.size(), "  %5.1f %% CPU  %6.0f KB/s read",
                (time - intervalTime_) / length * 100,
                static_cast<double>(bytes - intervalBytes_) / 1e3 / length.count());
  const bool isWarmUp = figures_.size() <= intervalsOfWarmUp(options_.duration);
  const auto elapsed = std::chrono::round<std::chrono::seconds>(now - begin_).count();
  printRow(std::to_string(elapsed) + (isWarmUp ? " s, warm-up" : " s"), figures_.back(),
           more.data());
  intervalBegin_ = now;
  intervalTime_ = time;
  intervalBytes_ = bytes;
  samples_.clear();
}

/// A child that ended with success, or by the SIGTERM that it gets when its parent dies, may
/// outlive the program for a moment.
void Soak::endProgram() {
  if (program_ && !program_->hasEnded()) {
    const int status = program_->end(gracePeriod);
    if (status != 0 && interruption_ == 0)
      fail("the program ended with " + icloud::describeEnd(status));
  }
  programLines_.finish();
  if (user_)
    user_->stop();
  for (const auto& orphan : icloud::collectOrphans({launchd_->identifier()}, gracePeriod))
    if (orphan.wasKilled)
      fail("left running: " + orphan.name);
  if (!launchd_->hasEnded())
    launchd_->end(gracePeriod);
}

void Soak::fail(const std::string& problem) {
  problems_.push_back(problem);
  isOver_ = true;
}

int Soak::report() {
  if (problems_.empty()) {
    const auto warmUp = static_cast<std::ptrdiff_t>(
        std::min(intervalsOfWarmUp(options_.duration), figures_.size()));
    const Judgement judgement = judge({figures_.begin() + warmUp, figures_.end()});
    std::puts("");
    printRow("first third", judgement.first, "");
    printRow("last third", judgement.last, "");
    problems_ = judgement.complaints;
  } else {
    std::puts("\nthe program's last lines:");
    for (const std::string& line : lastLines_)
      std::printf("  %s\n", line.c_str());
  }
  for (const std::string& problem : problems_)
    std::printf("FAILED  %s\n", problem.c_str());
  if (problems_.empty())
    std::puts("Nothing grows.");
  return problems_.empty() ? 0 : 1;
}

} // namespace driftmark::soak
