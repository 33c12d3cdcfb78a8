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

void Demo::beginShutdown() {
  if (ending_)
    return;
  ending_ = true;
  deadline_ = Clock::now() + endingTime;
  if (!program_)
    over_ = true;
  else if (!userQuits())
    program_->signal(SIGTERM);
}

void Demo::overrun() {
  if (storyOver_ && !userDone_) {
    userProblems_.push_back("waited in vain: " + user_->current());
    userDone_ = true;
    beginShutdown();
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
  const bool mayEnd = ending_ || options_.interactive || (storyOver_ && userQuits());
  if (options_.interactive && !storyOver_ && status == 0)
    reporter_.say("\nYou have quit it before the story was over.");
  if (!mayEnd)
    endProblems_.push_back("the program ended before the story did, with " + describeEnd(status));
  else if (status != 0)
    endProblems_.push_back("the program ended with " + describeEnd(status));
  userLeaves();
  checkOrphans();
  over_ = true;
}

void Demo::userLeaves() {
  if (!user_)
    return;
  user_->leave();
  takeUserReports();
  if (!userDone_)
    userProblems_.push_back("not done: " + user_->current());
  userDone_ = true;
}

void Demo::launchdEnded() {
  storyProblems_.push_back("bird ended before the story did, with " +
                           describeEnd(launchd_->wait()));
  beginShutdown();
}

void Demo::endChildren() {
  if (program_)
    program_->end(childTime);
  userLeaves();
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
  if (user_)
    conditions.push_back({"the user at the screen could do every step", userProblems_});
  conditions.push_back({"the program ended with status 0 when it was told to", endProblems_});
  conditions.push_back({"no process of the program was left", orphanProblems_});
  if (options_.interactive)
    return Summary(conditions);
  return Summary(checkLog(reporter_.logLines(), scenario_.expectations,
                          {{"home", sandbox_.home()}, {"drive", sandbox_.drive()}}),
                 reporter_.logTimes(), conditions);
}

} // namespace icloud
