// How a program runs against a simulated iCloud, up to the scenario's end.

#include "demo/Demo.h"

#include "common/SignalDescriptor.h"
#include "common/SystemFailure.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>

#include <poll.h>
#include <sys/signalfd.h>

namespace icloud {

Demo::Demo(const DemoOptions& options)
    : options_(options), scenario_(readScenario(options.scenario)), reporter_(options.out),
      sandbox_(options.tools), signals_(signalDescriptor({SIGINT, SIGTERM, SIGHUP})),
      deadline_(Clock::now() + options.timeout) {}

int Demo::run() {
  adoptOrphans();
  desktopLines_ = LineReader(sandbox_.openedFiles(),
                             [this](const std::string& line) { handleDesktopLine(line); });
  printIntroduction();
  startBird();
  watch();
  if (interruption_ != 0) {
    reporter_.message("\nInterrupted; everything is removed again.");
    return 128 + interruption_;
  }
  const Summary summary = makeSummary();
  reporter_.summary(summary.text());
  if (options_.out)
    reporter_.message("\nlog.txt, transcript.txt, menus.txt, summary.txt and the screenshots are "
                      "in " +
                      options_.out->string());
  return summary.deviations().empty() ? 0 : 1;
}

void Demo::printIntroduction() {
  std::array<char, 32> length{};
  std::snprintf(length.data(), length.size(), "%.3g s",
                std::chrono::duration<double>(scenario_.length()).count());
  const std::string program = options_.program.stem();
  reporter_.message("\"" + scenario_.title + "\", " + length.data() +
                    " of a simulated iCloud. Lines with ☁ are events of the scenario,\n"
                    "lines with ☞ are what its user does; the others are the log of " +
                    program + ".\n");
  if (options_.interactive)
    reporter_.message(
        "The user is you: " + program +
        " is at the top right of your screen. Open its menu whenever you like;\n"
        "what it asks the desktop to open is printed here. It ends with the scenario, "
        "or when\n"
        "you quit it; its log is not compared with the scenario.\n");
}

void Demo::startBird() {
  Pipe pipe = makePipe();
  birdLines_ = LineReader(std::move(pipe.reading),
                          [this](const std::string& line) { handleBirdLine(line); });
  Launch launch{sandbox_.root().launchd(),
                {"--home", sandbox_.home(), "--scenario",
                 std::filesystem::absolute(options_.scenario), "--begin-after",
                 "items,global,status,quota"},
                {}};
  launch.output = pipe.writing.get();
  launchd_.emplace(launch);
}

void Demo::startProgram() {
  Pipe pipe = makePipe();
  programLines_ = LineReader(std::move(pipe.reading),
                             [this](const std::string& line) { handleProgramLine(line); });
  Launch launch = sandbox_.programLaunch(options_.program,
                                         options_.interactive ? Screen::display : Screen::memory,
                                         scenario_.stallAfter);
  launch.output = launch.error = pipe.writing.get();
  if (!scenario_.user.empty() && !options_.interactive) {
    user_ = std::make_unique<ScenarioUser>(
        sandbox_.folder(),
        UserContext{.screenshots = options_.out.value_or(sandbox_.temporary()),
                    .drive = sandbox_.drive(),
                    .brctl = sandbox_.root().brctl()},
        scenario_.user);
    launch.environment.merge(user_->environment());
    userFinished_ = false;
  }
  program_.emplace(launch);
}

// A line is a time, a word and a text.
void Demo::handleBirdLine(const std::string& line) {
  const auto wordBegin = line.find(' ') + 1;
  const auto wordEnd = std::min(line.find(' ', wordBegin), line.size());
  const std::string word = line.substr(wordBegin, wordEnd - wordBegin);
  const std::string text = line.substr(std::min(wordEnd + 1, line.size()));
  if (word == "ready")
    startProgram();
  else if (word == "resumed")
    handleEvent("bird runs again, and the scenario continues");
  else if (word == "begin")
    handleEvent(text + "; the scenario begins");
  else if (word == "event")
    handleEvent(text);
  else if (word == "trouble") {
    handleEvent("failed: " + text);
    scenarioProblems_.push_back("a step could not be done: " + text);
  } else if (word == "end") {
    scenarioEnded();
  }
}

void Demo::handleProgramLine(const std::string& line) {
  reporter_.log(line);
  if (user_)
    user_->addLine(line);
}

void Demo::handleDesktopLine(const std::string& line) {
  reporter_.user(line);
  if (user_)
    user_->addLine(line);
}

void Demo::handleEvent(const std::string& text) {
  reporter_.event(text);
  if (user_)
    user_->addLine(text);
}

void Demo::handleUserReports() {
  using Kind = ScenarioUser::Report::Kind;
  for (const ScenarioUser::Report& report : user_->takeReports()) {
    if (report.kind == Kind::menu)
      reporter_.menu(report.text);
    else if (report.kind != Kind::finished)
      reporter_.user(report.text);
    if (report.kind == Kind::failure)
      userProblems_.push_back(report.text);
    userFinished_ = userFinished_ || report.kind == Kind::finished || report.kind == Kind::failure;
  }
  if (userFinished_ && scenarioEnded_)
    beginShutdown();
}

void Demo::scenarioEnded() {
  handleEvent("the scenario ends");
  scenarioEnded_ = true;
  if (userFinished_)
    beginShutdown();
}

void Demo::watch() {
  while (!isOver_ && interruption_ == 0)
    if (!waitForInput())
      timedOut();
  endChildren();
}

int Demo::pollTimeout() const {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline_ - Clock::now());
  return static_cast<int>(std::max<long>(left.count(), 0));
}

// Reads what a child wrote before it handles that the child ended. Returns false on a timeout.
bool Demo::waitForInput() {
  const bool programRuns = program_ && !program_->hasEnded();
  std::array<pollfd, 7> waits{
      {{signals_.get(), POLLIN, 0},
       {birdLines_.descriptor(), POLLIN, 0},
       {programLines_.descriptor(), POLLIN, 0},
       {user_ ? user_->descriptor() : -1, POLLIN, 0},
       {desktopLines_.descriptor(), POLLIN, 0},
       {programRuns ? program_->exitDescriptor() : -1, POLLIN, 0},
       {launchd_->hasEnded() ? -1 : launchd_->exitDescriptor(), POLLIN, 0}}};
  const auto& [signals, bird, program, user, desktop, programExit, launchdExit] = waits;
  const int ready = poll(waits.data(), waits.size(), pollTimeout());
  if (ready <= 0)
    return ready < 0;
  if (signals.revents != 0)
    readSignal();
  if (bird.revents != 0)
    birdLines_.read();
  if (program.revents != 0)
    programLines_.read();
  if (user.revents != 0)
    handleUserReports();
  if (desktop.revents != 0)
    desktopLines_.read();
  if (programExit.revents != 0)
    programEnded();
  else if (launchdExit.revents != 0 && bird.revents == 0)
    launchdEnded();
  return true;
}

void Demo::readSignal() {
  signalfd_siginfo info{};
  if (read(signals_.get(), &info, sizeof info) == sizeof info)
    interruption_ = static_cast<int>(info.ssi_signo);
}

} // namespace icloud
