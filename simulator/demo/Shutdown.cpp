// How a demo ends, and what its summary says about the end.

#include "demo/Demo.h"

#include <csignal>

#include <sys/wait.h>

namespace icloud {
namespace {

constexpr std::chrono::seconds shutdownTimeout{15};
constexpr std::chrono::seconds orphanGracePeriod{5};
constexpr std::chrono::seconds childGracePeriod{5};

} // namespace

bool Demo::userQuitsProgram() const {
  return run_.user() != nullptr && run_.user()->awaitsExit() && userProblems_.empty();
}

void Demo::beginShutdown() {
  if (isShuttingDown_)
    return;
  isShuttingDown_ = true;
  deadline_ = Clock::now() + shutdownTimeout;
  if (!run_.program())
    isOver_ = true;
  else if (!userQuitsProgram())
    run_.program()->signal(SIGTERM);
}

void Demo::timedOut() {
  if (scenarioEnded_ && !userFinished_) {
    userProblems_.push_back("timed out: " + run_.user()->currentStep());
    userFinished_ = true;
    beginShutdown();
    return;
  }
  if (isShuttingDown_)
    exitProblems_.emplace_back("the program did not end when it was asked to");
  else
    scenarioProblems_.push_back("the scenario had not ended " +
                                std::to_string(options_.timeout.count()) + " s after its time");
  isOver_ = true;
}

void Demo::programEnded() {
  const int status = run_.program()->wait();
  const bool mayEnd =
      isShuttingDown_ || options_.interactive || (scenarioEnded_ && userQuitsProgram());
  if (options_.interactive && !scenarioEnded_ && status == 0)
    reporter_.message("\nYou quit it before the scenario ended.");
  if (!mayEnd)
    exitProblems_.push_back("the program ended before the scenario, with " + describeEnd(status));
  else if (status != 0)
    exitProblems_.push_back("the program ended with " + describeEnd(status));
  stopUser();
  checkOrphans();
  isOver_ = true;
}

void Demo::launchdEnded() {
  scenarioProblems_.push_back("bird ended before the scenario, with " +
                              describeEnd(run_.launchd().wait()));
  beginShutdown();
}

void Demo::stopUser() {
  ScenarioUser* const user = run_.user();
  if (user == nullptr)
    return;
  user->stop();
  userHasReports();
  if (!userFinished_)
    userProblems_.push_back("not done: " + user->currentStep());
  userFinished_ = true;
}

void Demo::endChildren() {
  if (run_.program())
    run_.endProgram(childGracePeriod);
  stopUser();
  if (!run_.launchd().hasEnded()) {
    const int status = run_.launchd().end(childGracePeriod);
    if (status != 0)
      scenarioProblems_.push_back("launchd ended with " + describeEnd(status));
  }
  collectOrphans({}, std::chrono::milliseconds(0));
}

// A child that ended with success, or by the SIGTERM that it gets when its parent dies, is no
// deviation.
void Demo::checkOrphans() {
  for (const Orphan& orphan : collectOrphans({run_.launchd().identifier()}, orphanGracePeriod)) {
    const bool terminated = WIFSIGNALED(orphan.status) && WTERMSIG(orphan.status) == SIGTERM;
    if (orphan.wasKilled)
      orphanProblems_.push_back("left running: " + orphan.name);
    else if (!terminated && orphan.status != 0)
      orphanProblems_.push_back("left to end by itself, with " + describeEnd(orphan.status) + ": " +
                                orphan.name);
  }
}

Summary Demo::makeSummary() const {
  std::vector<Condition> conditions;
  if (scenarioEnded_ || !options_.interactive)
    conditions.push_back({"the scenario ran to its end", scenarioProblems_});
  if (run_.user() != nullptr)
    conditions.push_back({"the scenario's user completed every step", userProblems_});
  conditions.push_back({"the program ended with status 0 when it was asked to", exitProblems_});
  conditions.push_back({"no process of the program was left", orphanProblems_});
  if (options_.interactive)
    return Summary(conditions);
  return Summary(checkLog(reporter_.logLines(), run_.scenario().expectations,
                          {{"home", run_.sandbox().home()}, {"drive", run_.sandbox().drive()}}),
                 reporter_.logTimes(), conditions);
}

} // namespace icloud
