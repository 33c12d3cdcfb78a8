// How a program runs against a simulated iCloud, up to the scenario's end.

#include "demo/Demo.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace icloud {

Demo::Demo(const DemoOptions& options)
    : options_(options), reporter_(options.out), run_(options.tools, options.scenario, *this) {
  if (!options.interactive && !run_.scenario().repeats())
    deadline_ = Clock::now() + run_.scenario().length() + options.timeout;
}

int Demo::run() {
  printIntroduction();
  run_.startBird();
  watch();
  if (run_.interruption() != 0) {
    reporter_.message("\nInterrupted; everything is removed again.");
    return 128 + run_.interruption();
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
                std::chrono::duration<double>(run_.scenario().length()).count());
  const std::string program = options_.program.stem();
  reporter_.message("\"" + run_.scenario().title + "\", " + length.data() +
                    " of a simulated iCloud. Lines with ☁ are events of the scenario,\n"
                    "lines with ☞ are what its user does; the others are the log of " +
                    program + ".\n");
  if (options_.interactive)
    reporter_.message("The user is you: " + program +
                      " is at the top right of your screen. Open its menu whenever you like;\n"
                      "what it asks the desktop to open is printed here. It ends " +
                      (run_.scenario().repeats() ? "when you quit it"
                                                 : "with the scenario, or when you quit it") +
                      ";\nits log is not compared with the scenario.\n");
}

void Demo::printCommands() {
  const auto& sandbox = run_.sandbox();
  reporter_.message("To change the drive yourself, in another terminal:\n"
                    "  cd \"" +
                    sandbox.drive().string() + "\"\n  brctl=" + sandbox.root().brctl().string() +
                    "\n"
                    "  $brctl evict FILE       leaves the contents of a file only in iCloud\n"
                    "  $brctl download FILE    brings them back\n");
}

void Demo::startProgram() {
  run_.startProgram(options_.program, options_.interactive ? Screen::display : Screen::memory,
                    options_.out);
  userFinished_ = run_.user() == nullptr;
  if (options_.interactive)
    printCommands();
}

// A line is a time, a word and a text.
void Demo::birdPrinted(const std::string& line) {
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

void Demo::programPrinted(const std::string& line) {
  reporter_.log(line);
  if (ScenarioUser* const user = run_.user())
    user->addLine(line);
}

void Demo::desktopPrinted(const std::string& line) {
  reporter_.user(line);
  if (ScenarioUser* const user = run_.user())
    user->addLine(line);
}

void Demo::handleEvent(const std::string& text) {
  reporter_.event(text);
  if (ScenarioUser* const user = run_.user())
    user->addLine(text);
}

void Demo::userHasReports() {
  using Kind = ScenarioUser::Report::Kind;
  for (const ScenarioUser::Report& report : run_.user()->takeReports()) {
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
  while (!isOver_ && run_.interruption() == 0)
    if (!run_.waitForInput(timeLeft()))
      timedOut();
  endChildren();
}

std::optional<std::chrono::milliseconds> Demo::timeLeft() const {
  if (!deadline_)
    return std::nullopt;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline_ - Clock::now());
  return std::max(left, std::chrono::milliseconds(0));
}

} // namespace icloud
