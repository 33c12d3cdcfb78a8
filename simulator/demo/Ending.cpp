// How a story ends, and what came of it.

#include "demo/Demo.h"
#include "process/Orphans.h"

#include <csignal>

#include <sys/wait.h>

namespace icloud {
namespace {

constexpr std::chrono::seconds endingTime{15};
constexpr std::chrono::seconds orphanTime{5};
constexpr std::chrono::seconds childTime{5};

} // namespace

void Demo::beginEnding() {
  if (ending_)
    return;
  ending_ = true;
  deadline_ = Clock::now() + endingTime;
  if (!program_)
    over_ = true;
  else if (!personQuits())
    program_->signal(SIGTERM);
}

void Demo::overrun() {
  if (storyOver_ && !personDone_) {
    personProblems_.push_back("waited in vain: " + attendant_->current());
    personDone_ = true;
    beginEnding();
    return;
  }
  if (ending_)
    endProblems_.emplace_back("the program did not end when it was told to");
  else
    storyProblems_.push_back("the story was not over after " +
                             std::to_string(options_.limit.count()) + " s");
  over_ = true;
}

void Demo::programEnded() {
  const int status = program_->wait();
  programLines_.finish();
  const bool mayEnd = ending_ || options_.interactive || (storyOver_ && personQuits());
  if (options_.interactive && !storyOver_ && status == 0)
    narrator_.say("\nYou have quit it before the story was over.");
  if (!mayEnd)
    endProblems_.push_back("the program ended before the story did, with " + describeEnd(status));
  else if (status != 0)
    endProblems_.push_back("the program ended with " + describeEnd(status));
  personLeaves();
  checkOrphans();
  over_ = true;
}

void Demo::personLeaves() {
  if (!attendant_)
    return;
  attendant_->leave();
  hearPerson();
  if (!personDone_)
    personProblems_.push_back("not done: " + attendant_->current());
  personDone_ = true;
}

void Demo::launchdEnded() {
  storyProblems_.push_back("bird ended before the story did, with " +
                           describeEnd(launchd_->wait()));
  beginEnding();
}

void Demo::endChildren() {
  if (program_)
    program_->end(childTime);
  personLeaves();
  if (!launchd_->hasEnded()) {
    const int status = launchd_->end(childTime);
    if (status != 0)
      storyProblems_.push_back("launchd ended with " + describeEnd(status));
  }
  collectOrphans({}, std::chrono::milliseconds(0));
}

// A child that was asked to end, or had done its work, is no deviation.
void Demo::checkOrphans() {
  for (const Orphan& orphan : collectOrphans({launchd_->identifier()}, orphanTime)) {
    const bool asked = WIFSIGNALED(orphan.status) && WTERMSIG(orphan.status) == SIGTERM;
    if (orphan.outlived)
      orphanProblems_.push_back("left running: " + orphan.name);
    else if (!asked && orphan.status != 0)
      orphanProblems_.push_back("left to end by itself, with " + describeEnd(orphan.status) + ": " +
                                orphan.name);
  }
}

Summary Demo::makeSummary() const {
  std::vector<Condition> conditions;
  if (storyOver_ || !options_.interactive)
    conditions.push_back({"the story was told to its end", storyProblems_});
  if (attendant_)
    conditions.push_back({"the person at the screen could do every step", personProblems_});
  conditions.push_back({"the program ended with status 0 when it was told to", endProblems_});
  conditions.push_back({"no process of the program was left", orphanProblems_});
  if (options_.interactive)
    return Summary(conditions);
  return Summary(checkLog(narrator_.logLines(), scenario_.expectations,
                          {{"home", world_.home()}, {"drive", world_.drive()}}),
                 narrator_.logTimes(), conditions);
}

} // namespace icloud
