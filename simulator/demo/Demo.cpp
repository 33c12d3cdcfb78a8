#include "demo/Demo.h"

#include "common/SystemFailure.h"
#include "process/Orphans.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>

#include <poll.h>
#include <sys/signalfd.h>
#include <sys/wait.h>

namespace icloud {
namespace fs = std::filesystem;

namespace {

constexpr std::chrono::seconds endingTime{15};
constexpr std::chrono::seconds orphanTime{5};
constexpr std::chrono::seconds childTime{5};

Descriptor interruptions() {
  sigset_t set;
  sigemptyset(&set);
  for (const int number : {SIGINT, SIGTERM, SIGHUP})
    sigaddset(&set, number);
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
  Descriptor signals(signalfd(-1, &set, SFD_CLOEXEC));
  if (!signals)
    throwSystemFailure("cannot wait for signals");
  return signals;
}

} // namespace

Demo::Demo(const DemoOptions& options)
    : options_(options), scenario_(readScenario(options.scenario)), narrator_(options.out),
      world_(options.tools), signals_(interruptions()), deadline_(Clock::now() + options.limit) {}

int Demo::run() {
  adoptOrphans();
  introduce();
  startBird();
  watch();
  if (interruption_ != 0) {
    narrator_.say("\nInterrupted; everything is taken away again.");
    return 128 + interruption_;
  }
  const Summary summary = makeSummary();
  narrator_.summary(summary.text());
  if (options_.out)
    narrator_.say("\nlog.txt, story.txt and summary.txt are in " + options_.out->string());
  return summary.deviations().empty() ? 0 : 1;
}

void Demo::introduce() {
  std::array<char, 32> length{};
  std::snprintf(length.data(), length.size(), "%.3g s",
                std::chrono::duration<double>(scenario_.length()).count());
  narrator_.say("\"" + scenario_.title + "\", " + length.data() +
                " of a simulated iCloud. A line with ☁ is what happens there;\n"
                "the others are the log of " +
                options_.program.filename().string() + ".\n");
}

void Demo::startBird() {
  Pipe pipe = makePipe();
  birdLines_ =
      LineReader(std::move(pipe.reading), [this](const std::string& line) { hearBird(line); });
  Launch launch{world_.root().bird(),
                {"--home", world_.home(), "--scenario",
                 std::filesystem::absolute(options_.scenario), "--begin-after",
                 "items,global,status,quota"},
                {}};
  launch.output = pipe.writing.get();
  bird_.emplace(launch);
}

fs::path Demo::installedProgram() const {
  const fs::path& program = options_.program;
  const fs::path folder = program.parent_path();
  const fs::path bundle = folder.parent_path().parent_path();
  if (!folder.string().ends_with("/Contents/MacOS") || bundle.extension() != ".app")
    return program;
  return world_.install(bundle) / "Contents/MacOS" / program.filename();
}

void Demo::startProgram() {
  Pipe pipe = makePipe();
  programLines_ =
      LineReader(std::move(pipe.reading), [this](const std::string& line) { narrator_.log(line); });
  Launch launch{installedProgram(),
                {},
                {{"HOME", world_.home()},
                 {"TMPDIR", world_.temporary()},
                 {"DRIFTMARK_SYSTEM_ROOT", world_.root().path()},
                 {"DRIFTMARK_STALL_SECS", scenario_.stallAfter},
                 {"XDG_CONFIG_HOME", std::nullopt},
                 {"XDG_DATA_HOME", std::nullopt},
                 {"XDG_CACHE_HOME", std::nullopt}}};
  launch.output = launch.error = pipe.writing.get();
  program_.emplace(launch);
}

void Demo::hearBird(const std::string& line) {
  const auto wordBegin = line.find(' ') + 1;
  const auto wordEnd = std::min(line.find(' ', wordBegin), line.size());
  const std::string word = line.substr(wordBegin, wordEnd - wordBegin);
  const std::string text = line.substr(std::min(wordEnd + 1, line.size()));
  if (word == "ready")
    startProgram();
  else if (word == "begin")
    narrator_.cloud(text + "; the story begins");
  else if (word == "story")
    narrator_.cloud(text);
  else if (word == "trouble") {
    narrator_.cloud("trouble: " + text);
    storyProblems_.push_back("a step could not be done: " + text);
  } else if (word == "end") {
    narrator_.cloud("the story ends");
    beginEnding();
  }
}

void Demo::beginEnding() {
  if (ending_)
    return;
  ending_ = true;
  deadline_ = Clock::now() + endingTime;
  if (program_)
    program_->signal(SIGTERM);
  else
    over_ = true;
}

void Demo::watch() {
  while (!over_ && interruption_ == 0)
    if (!wait())
      overrun();
  endChildren();
}

void Demo::endChildren() {
  if (program_)
    program_->end(childTime);
  if (!bird_->hasEnded()) {
    const int status = bird_->end(childTime);
    if (status != 0)
      storyProblems_.push_back("bird ended with " + describeEnd(status));
  }
  collectOrphans({}, std::chrono::milliseconds(0));
}

int Demo::timeLeft() const {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline_ - Clock::now());
  return static_cast<int>(std::max<long>(left.count(), 0));
}

bool Demo::wait() {
  const bool programRuns = program_ && !program_->hasEnded();
  std::array<pollfd, 5> waits{{{signals_.get(), POLLIN, 0},
                               {birdLines_.descriptor(), POLLIN, 0},
                               {programLines_.descriptor(), POLLIN, 0},
                               {programRuns ? program_->exitDescriptor() : -1, POLLIN, 0},
                               {bird_->hasEnded() ? -1 : bird_->exitDescriptor(), POLLIN, 0}}};
  const int ready = poll(waits.data(), waits.size(), timeLeft());
  if (ready <= 0)
    return ready < 0;
  if (waits[0].revents != 0)
    takeSignal();
  if (waits[1].revents != 0)
    birdLines_.read();
  if (waits[2].revents != 0)
    programLines_.read();
  if (waits[3].revents != 0)
    programEnded();
  else if (waits[4].revents != 0 && waits[1].revents == 0)
    birdEnded();
  return true;
}

void Demo::overrun() {
  if (ending_)
    endProblems_.emplace_back("the program did not end after SIGTERM");
  else
    storyProblems_.push_back("the story was not over after " +
                             std::to_string(options_.limit.count()) + " s");
  over_ = true;
}

void Demo::takeSignal() {
  signalfd_siginfo info{};
  if (read(signals_.get(), &info, sizeof info) == sizeof info)
    interruption_ = static_cast<int>(info.ssi_signo);
}

void Demo::programEnded() {
  const int status = program_->wait();
  programLines_.finish();
  if (!ending_)
    endProblems_.push_back("the program ended before the story did, with " + describeEnd(status));
  else if (status != 0)
    endProblems_.push_back("the program ended with " + describeEnd(status));
  checkOrphans();
  over_ = true;
}

void Demo::birdEnded() {
  storyProblems_.push_back("bird ended before the story did, with " + describeEnd(bird_->wait()));
  beginEnding();
}

// A child that was asked to end, or had done its work, is no deviation.
void Demo::checkOrphans() {
  for (const Orphan& orphan : collectOrphans({bird_->identifier()}, orphanTime)) {
    const bool asked = WIFSIGNALED(orphan.status) && WTERMSIG(orphan.status) == SIGTERM;
    if (orphan.outlived)
      orphanProblems_.push_back("left running: " + orphan.name);
    else if (!asked && orphan.status != 0)
      orphanProblems_.push_back("left to end by itself, with " + describeEnd(orphan.status) + ": " +
                                orphan.name);
  }
}

Summary Demo::makeSummary() const {
  return Summary(checkLog(narrator_.logLines(), scenario_.expectations,
                          {{"home", world_.home()}, {"drive", world_.drive()}}),
                 narrator_.logTimes(),
                 {{"the story was told to its end", storyProblems_},
                  {"the program ended with status 0 on SIGTERM", endProblems_},
                  {"no process of the program was left", orphanProblems_}});
}

} // namespace icloud
