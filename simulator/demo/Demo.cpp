#include "demo/Demo.h"

#include "common/SignalDescriptor.h"
#include "common/SystemFailure.h"
#include "demo/ProgramLaunch.h"
#include "process/Orphans.h"

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
      deadline_(Clock::now() + options.limit) {}

int Demo::run() {
  adoptOrphans();
  desktopLines_ =
      LineReader(sandbox_.openedFiles(), [this](const std::string& line) { hearDesktop(line); });
  introduce();
  startBird();
  watch();
  if (interruption_ != 0) {
    reporter_.say("\nInterrupted; everything is taken away again.");
    return 128 + interruption_;
  }
  const Summary summary = makeSummary();
  reporter_.summary(summary.text());
  if (options_.out)
    reporter_.say("\nlog.txt, story.txt, menus.txt, summary.txt and the pictures are in " +
                  options_.out->string());
  return summary.deviations().empty() ? 0 : 1;
}

void Demo::introduce() {
  std::array<char, 32> length{};
  std::snprintf(length.data(), length.size(), "%.3g s",
                std::chrono::duration<double>(scenario_.length()).count());
  const std::string program = options_.program.stem();
  reporter_.say("\"" + scenario_.title + "\", " + length.data() +
                " of a simulated iCloud. A line with ☁ is what happens there,\n"
                "one with ☞ what a user does at the screen; the others are the log of " +
                program + ".\n");
  if (options_.interactive)
    reporter_.say("The user is you: " + program +
                  " is at the top right of your screen. Open its menu whenever you like;\n"
                  "what it asks the desktop to open is told here. It ends with the story, or when\n"
                  "you quit it; what it logs is not compared with the scenario.\n");
}

void Demo::startBird() {
  Pipe pipe = makePipe();
  birdLines_ =
      LineReader(std::move(pipe.reading), [this](const std::string& line) { hearBird(line); });
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
  programLines_ = LineReader(std::move(pipe.reading), [this](const std::string& line) {
    reporter_.log(line);
    if (user_)
      user_->hear(line);
  });
  Launch launch = programLaunch(options_, scenario_, sandbox_);
  launch.output = launch.error = pipe.writing.get();
  if (!scenario_.user.empty() && !options_.interactive) {
    user_ = std::make_unique<ScenarioUser>(
        sandbox_.folder(),
        Surroundings{.pictures = options_.out.value_or(sandbox_.temporary()),
                     .drive = sandbox_.drive(),
                     .brctl = sandbox_.root().brctl()},
        scenario_.user);
    launch.environment.merge(user_->environment());
    userDone_ = false;
  }
  program_.emplace(launch);
}

void Demo::hearBird(const std::string& line) {
  const auto wordBegin = line.find(' ') + 1;
  const auto wordEnd = std::min(line.find(' ', wordBegin), line.size());
  const std::string word = line.substr(wordBegin, wordEnd - wordBegin);
  const std::string text = line.substr(std::min(wordEnd + 1, line.size()));
  if (word == "ready")
    startProgram();
  else if (word == "resumed")
    tellStory("bird runs again, and the story goes on");
  else if (word == "begin")
    tellStory(text + "; the story begins");
  else if (word == "story")
    tellStory(text);
  else if (word == "trouble") {
    tellStory("trouble: " + text);
    storyProblems_.push_back("a step could not be done: " + text);
  } else if (word == "end") {
    storyEnded();
  }
}

void Demo::tellStory(const std::string& text) {
  reporter_.cloud(text);
  if (user_)
    user_->hear(text);
}

void Demo::storyEnded() {
  tellStory("the story ends");
  storyOver_ = true;
  if (userDone_)
    beginShutdown();
}

void Demo::hearDesktop(const std::string& line) {
  reporter_.user(line);
  if (user_)
    user_->hear(line);
}

void Demo::takeUserReports() {
  using Kind = ScenarioUser::Report::Kind;
  for (const ScenarioUser::Report& report : user_->takeReports()) {
    if (report.kind == Kind::menu)
      reporter_.menu(report.text);
    else if (report.kind != Kind::done)
      reporter_.user(report.text);
    if (report.kind == Kind::trouble)
      userProblems_.push_back(report.text);
    userDone_ = userDone_ || report.kind == Kind::done || report.kind == Kind::trouble;
  }
  if (userDone_ && storyOver_)
    beginShutdown();
}

bool Demo::userQuits() const {
  return user_ && user_->seesTheEnd() && userProblems_.empty();
}

void Demo::watch() {
  while (!over_ && interruption_ == 0)
    if (!wait())
      overrun();
  endChildren();
}

int Demo::timeLeft() const {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline_ - Clock::now());
  return static_cast<int>(std::max<long>(left.count(), 0));
}

bool Demo::wait() {
  const bool programRuns = program_ && !program_->hasEnded();
  std::array<pollfd, 7> waits{{{signals_.get(), POLLIN, 0},
                               {birdLines_.descriptor(), POLLIN, 0},
                               {programLines_.descriptor(), POLLIN, 0},
                               {programRuns ? program_->exitDescriptor() : -1, POLLIN, 0},
                               {launchd_->hasEnded() ? -1 : launchd_->exitDescriptor(), POLLIN, 0},
                               {user_ ? user_->descriptor() : -1, POLLIN, 0},
                               {desktopLines_.descriptor(), POLLIN, 0}}};
  const int ready = poll(waits.data(), waits.size(), timeLeft());
  if (ready <= 0)
    return ready < 0;
  if (waits[0].revents != 0)
    takeSignal();
  if (waits[1].revents != 0)
    birdLines_.read();
  if (waits[2].revents != 0)
    programLines_.read();
  if (waits[5].revents != 0)
    takeUserReports();
  if (waits[6].revents != 0)
    desktopLines_.read();
  if (waits[3].revents != 0)
    programEnded();
  else if (waits[4].revents != 0 && waits[1].revents == 0)
    launchdEnded();
  return true;
}

void Demo::takeSignal() {
  signalfd_siginfo info{};
  if (read(signals_.get(), &info, sizeof info) == sizeof info)
    interruption_ = static_cast<int>(info.ssi_signo);
}

} // namespace icloud
