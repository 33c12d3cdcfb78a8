#pragma once

#include "common/Descriptor.h"
#include "demo/UserSteps.h"
#include "scenario/UserStep.h"
#include "uidriver/DriverListener.h"

#include <condition_variable>
#include <cstddef>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace icloud {

/// The user of a scenario: executes the user steps in their order, on a thread of its own, and
/// reports on them. The operations are for the thread that made it.
class ScenarioUser {
public:
  struct Report {
    enum class Kind {
      step,        ///< a step begins; the text is the scenario's
      observation, ///< what the user observed
      menu,        ///< what the open menu shows, in several lines
      failure,     ///< a step failed; the user does nothing more
      finished,    ///< every step is done
    };
    Kind kind = Kind::step;
    std::string text;
  };

  /// Listens for the program at a socket in `folder`. Throws std::system_error.
  ScenarioUser(const std::filesystem::path& folder, UserContext context,
               std::vector<UserStep> steps);
  ~ScenarioUser();
  ScenarioUser(const ScenarioUser&) = delete;
  ScenarioUser& operator=(const ScenarioUser&) = delete;

  /// The environment that the program needs so that its plug-in connects to this user.
  std::map<std::string, std::optional<std::string>> environment() const {
    return driverListener_.environment();
  }

  /// Adds an event of the scenario or a line of the log, for `AwaitLine`.
  void addLine(const std::string& line);

  /// Readable when there are reports.
  int descriptor() const { return reportEvent_.get(); }
  std::vector<Report> takeReports();

  /// The step under way, as display text; empty when all are done.
  std::string currentStep() const;

  /// Whether the last step waits for the program to end.
  bool awaitsExit() const {
    return !steps_.empty() && std::holds_alternative<AwaitExit>(steps_.back().action);
  }

  /// Ends the thread, if need be in the middle of the steps. Called once the program has ended.
  void stop();

private:
  void run();
  void execute(UserSteps& userSteps, const UserStep& step);
  void await(const AwaitLine& step);
  void pause(Milliseconds duration);
  void report(Report::Kind kind, const std::string& text);

  DriverListener driverListener_;
  const UserContext context_;
  const std::vector<UserStep> steps_;
  Descriptor reportEvent_;

  mutable std::mutex mutex_; // for the members up to `reports_`
  std::condition_variable changed_;
  std::vector<std::string> lines_;
  std::size_t nextLine_ = 0; // the first that `AwaitLine` has not passed
  std::size_t nextStep_ = 0;
  bool isStopping_ = false;
  std::vector<Report> reports_;

  std::thread thread_;
};

} // namespace icloud
