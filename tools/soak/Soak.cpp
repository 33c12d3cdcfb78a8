// How a program runs for a long time, and when its figures are taken.

#include "soak/Soak.h"

#include "soak/Judgement.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <utility>

namespace driftmark::soak {
namespace {

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
    : options_(options), run_(options.tools, options.scenario, *this) {}

int Soak::run() {
  run_.startBird();
  while (!isOver_ && run_.interruption() == 0)
    waitForInput();
  endProgram();
  return run_.interruption() != 0 ? 128 + run_.interruption() : report();
}

void Soak::birdPrinted(const std::string& line) {
  if (line.find(" ready") != std::string::npos && !run_.program()) {
    run_.startProgram(options_.program, icloud::Screen::memory);
    begin_ = intervalBegin_ = nextSample_ = Clock::now();
  } else if (line.find(" trouble ") != std::string::npos) {
    fail("a step of the scenario failed: " + line);
  }
}

void Soak::programPrinted(const std::string& line) {
  lastLines_.push_back(line);
  if (lastLines_.size() > maxLastLines)
    lastLines_.pop_front();
}

void Soak::userHasReports() {
  for (const auto& report : run_.user()->takeReports())
    if (report.kind == icloud::ScenarioUser::Report::Kind::failure)
      fail(report.text);
}

void Soak::programEnded() {
  fail("the program ended by itself, with " + icloud::describeEnd(run_.program()->wait()));
}

void Soak::launchdEnded() {
  fail("bird ended by itself, with " + icloud::describeEnd(run_.launchd().wait()));
}

void Soak::waitForInput() {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(nextSample_ - Clock::now());
  run_.waitForInput(std::clamp(left, std::chrono::milliseconds(0), sampleInterval));
  if (run_.programRuns() && Clock::now() >= nextSample_)
    takeSample();
}

void Soak::takeSample() {
  const auto now = Clock::now();
  nextSample_ = now + sampleInterval;
  try {
    samples_.push_back(icloud::holdingsOf(run_.program()->identifier()));
    if (now >= intervalBegin_ + interval)
      endInterval(now);
  } catch (const std::exception&) {
    return; // the program has ended; its descriptor reports it next
  }
  isOver_ = isOver_ || figures_.size() * interval >= options_.duration;
}

void Soak::endInterval(Clock::time_point now) {
  const pid_t process = run_.program()->identifier();
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
  if (run_.programRuns()) {
    const int status = run_.endProgram(gracePeriod);
    if (status != 0 && run_.interruption() == 0)
      fail("the program ended with " + icloud::describeEnd(status));
  }
  if (run_.user() != nullptr)
    run_.user()->stop();
  for (const auto& orphan : icloud::collectOrphans({run_.launchd().identifier()}, gracePeriod))
    if (orphan.wasKilled)
      fail("left running: " + orphan.name);
  if (!run_.launchd().hasEnded())
    run_.launchd().end(gracePeriod);
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
