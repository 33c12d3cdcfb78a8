// How the steps of a scenario's user are executed while the program runs.

#include "demo/ScenarioUser.h"

#include "common/LocalSocket.h"
#include "common/SystemFailure.h"
#include "scenario/Glob.h"

#include <system_error>
#include <utility>

#include <sys/eventfd.h>

namespace icloud {
namespace {

Descriptor newEvent() {
  Descriptor event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!event)
    throwSystemFailure("cannot make an event descriptor");
  return event;
}

std::string describe(const UserStep& step) {
  return "line " + std::to_string(step.line) + " of the scenario, user " + step.text;
}

/// Unwinds the thread when it is to stop.
struct Stopped {};

template <typename... Functions> struct Overloaded : Functions... {
  using Functions::operator()...;
};
template <typename... Functions> Overloaded(Functions...) -> Overloaded<Functions...>;

} // namespace

ScenarioUser::ScenarioUser(const std::filesystem::path& folder, UserContext context,
                           std::vector<UserStep> steps)
    : driverListener_(folder), context_(std::move(context)), steps_(std::move(steps)),
      reportEvent_(newEvent()), thread_([this] { run(); }) {}

ScenarioUser::~ScenarioUser() {
  stop();
}

void ScenarioUser::addLine(const std::string& line) {
  const std::lock_guard lock(mutex_);
  lines_.push_back(line);
  changed_.notify_one();
}

std::vector<ScenarioUser::Report> ScenarioUser::takeReports() {
  const std::lock_guard lock(mutex_);
  eventfd_t count = 0;
  eventfd_read(reportEvent_.get(), &count);
  return std::exchange(reports_, {});
}

std::string ScenarioUser::currentStep() const {
  const std::lock_guard lock(mutex_);
  return nextStep_ < steps_.size() ? describe(steps_[nextStep_]) : std::string();
}

// The thread may still wait for a program to connect. A connection that closes at once ends that.
void ScenarioUser::stop() {
  if (!thread_.joinable())
    return;
  {
    const std::lock_guard lock(mutex_);
    isStopping_ = true;
    changed_.notify_one();
  }
  try {
    connectTo(driverListener_.socket().parent_path(), driverListener_.socket().filename().c_str());
  } catch (const std::system_error&) {
  }
  thread_.join();
}

void ScenarioUser::run() {
  try {
    UserSteps userSteps(
        driverListener_.awaitProgram(), context_,
        [this](const std::string& text) { report(Report::Kind::observation, text); },
        [this](const std::string& text) { report(Report::Kind::menu, text); });
    while (nextStep_ < steps_.size())
      execute(userSteps, steps_[nextStep_]);
    report(Report::Kind::finished, "");
  } catch (const Stopped&) {
  } catch (const std::exception& error) {
    report(Report::Kind::failure, currentStep() + ": " + error.what());
  }
}

void ScenarioUser::execute(UserSteps& userSteps, const UserStep& step) {
  std::visit(Overloaded{[this](const AwaitLine& action) { await(action); },
                        [this](const Pause& action) { pause(action.duration); },
                        [](const RepeatUserSteps&) {},
                        [&](const auto& action) {
                          report(Report::Kind::step, step.text);
                          userSteps(action);
                        }},
             step.action);
  const std::lock_guard lock(mutex_);
  const bool repeats = std::holds_alternative<RepeatUserSteps>(step.action);
  if (repeats && isStopping_)
    throw Stopped();
  nextStep_ = repeats ? 0 : nextStep_ + 1;
}

void ScenarioUser::await(const AwaitLine& step) {
  std::unique_lock lock(mutex_);
  while (true) {
    while (nextLine_ < lines_.size())
      if (matchesGlob(step.pattern, lines_[nextLine_++]))
        return;
    if (isStopping_)
      throw Stopped();
    changed_.wait(lock);
  }
}

void ScenarioUser::pause(Milliseconds duration) {
  std::unique_lock lock(mutex_);
  if (changed_.wait_for(lock, duration, [this] { return isStopping_; }))
    throw Stopped();
}

void ScenarioUser::report(Report::Kind kind, const std::string& text) {
  const std::lock_guard lock(mutex_);
  reports_.push_back({kind, text});
  eventfd_write(reportEvent_.get(), 1);
}

} // namespace icloud
