#include "demo/ScenarioUser.h"

#include "common/LocalSocket.h"
#include "common/SystemFailure.h"
#include "scenario/Glob.h"

#include <stdexcept>
#include <system_error>
#include <utility>

#include <sys/eventfd.h>

namespace icloud {
namespace {

Descriptor newEvent() {
  Descriptor event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!event)
    throwSystemFailure("cannot wait for the user");
  return event;
}

std::string nameOf(const UserStep& step) {
  return "line " + std::to_string(step.line) + " of the scenario, user " + step.text;
}

/// What the user throws to get up.
struct Leaving {};

template <typename... Functions> struct Overloaded : Functions... {
  using Functions::operator()...;
};
template <typename... Functions> Overloaded(Functions...) -> Overloaded<Functions...>;

} // namespace

ScenarioUser::ScenarioUser(const std::filesystem::path& folder, Surroundings surroundings,
                           std::vector<UserStep> steps)
    : driverListener_(folder), surroundings_(std::move(surroundings)), steps_(std::move(steps)),
      news_(newEvent()), thread_([this] { work(); }) {}

ScenarioUser::~ScenarioUser() {
  leave();
}

void ScenarioUser::hear(const std::string& line) {
  const std::lock_guard lock(mutex_);
  lines_.push_back(line);
  changed_.notify_one();
}

std::vector<ScenarioUser::Report> ScenarioUser::takeReports() {
  const std::lock_guard lock(mutex_);
  eventfd_t count = 0;
  eventfd_read(news_.get(), &count);
  return std::exchange(reports_, {});
}

std::string ScenarioUser::current() const {
  const std::lock_guard lock(mutex_);
  return step_ < steps_.size() ? nameOf(steps_[step_]) : std::string();
}

// A user that still waits for a program to come up is told that none does.
void ScenarioUser::leave() {
  if (!thread_.joinable())
    return;
  {
    const std::lock_guard lock(mutex_);
    leaves_ = true;
    changed_.notify_one();
  }
  try {
    connectTo(driverListener_.socket().parent_path(), driverListener_.socket().filename().c_str());
  } catch (const std::system_error&) {
  }
  thread_.join();
}

void ScenarioUser::work() {
  try {
    UserSteps acts(
        driverListener_.awaitProgram(), surroundings_,
        [this](const std::string& text) { report(Report::Kind::saw, text); },
        [this](const std::string& text) { report(Report::Kind::menu, text); });
    for (const UserStep& step : steps_)
      obey(acts, step);
    report(Report::Kind::done, "");
  } catch (const Leaving&) {
  } catch (const std::exception& problem) {
    report(Report::Kind::trouble, current() + ": " + problem.what());
  }
}

void ScenarioUser::obey(UserSteps& acts, const UserStep& step) {
  std::visit(Overloaded{[this](const AwaitLine& wanted) { await(wanted); },
                        [this](const Pause& act) { pause(act.duration); },
                        [&](const auto& act) {
                          report(Report::Kind::did, step.text);
                          acts(act);
                        }},
             step.act);
  const std::lock_guard lock(mutex_);
  ++step_;
}

void ScenarioUser::await(const AwaitLine& wanted) {
  std::unique_lock lock(mutex_);
  while (true) {
    for (; next_ < lines_.size(); ++next_)
      if (matchesGlob(wanted.pattern, lines_[next_])) {
        ++next_;
        return;
      }
    if (leaves_)
      throw Leaving();
    changed_.wait(lock);
  }
}

void ScenarioUser::pause(Milliseconds duration) {
  std::unique_lock lock(mutex_);
  if (changed_.wait_for(lock, duration, [this] { return leaves_; }))
    throw Leaving();
}

void ScenarioUser::report(Report::Kind kind, const std::string& text) {
  const std::lock_guard lock(mutex_);
  reports_.push_back({kind, text});
  eventfd_write(news_.get(), 1);
}

} // namespace icloud
