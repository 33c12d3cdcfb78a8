#pragma once

#include "common/Descriptor.h"
#include "demo/UserSteps.h"
#include "process/Launch.h"
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

/// The user of a scenario: obeys the lines one after the other, on a thread of its own, and tells
/// how it goes.
class ScenarioUser {
public:
  struct Report {
    enum class Kind {
      did,     ///< a step, in the words of the scenario
      saw,     ///< what the user saw, in other words
      menu,    ///< what the open menu shows, in several lines
      trouble, ///< a step that could not be done; the user does nothing more
      done,    ///< every step is done
    };
    Kind kind = Kind::did;
    std::string text;
  };

  /// Sits down at a seat in `folder`. Throws std::system_error.
  ScenarioUser(const std::filesystem::path& folder, Surroundings surroundings,
               std::vector<UserStep> steps);
  ~ScenarioUser();
  ScenarioUser(const ScenarioUser&) = delete;
  ScenarioUser& operator=(const ScenarioUser&) = delete;

  /// What the program's environment must say.
  std::map<std::string, std::optional<std::string>> environment() const {
    return driverListener_.environment();
  }

  /// Tells the user a line of the story or of the log.
  void hear(const std::string& line);

  /// Readable when there are reports.
  int descriptor() const { return news_.get(); }
  std::vector<Report> takeReports();

  /// What the user is at, in words; empty when all is done.
  std::string current() const;

  /// Whether the last step is to see the program end.
  bool seesTheEnd() const {
    return !steps_.empty() && std::holds_alternative<AwaitExit>(steps_.back().act);
  }

  /// Lets the user get up, in the middle of the steps if need be, once the program has ended.
  void leave();

private:
  void work();
  void obey(UserSteps& acts, const UserStep& step);
  void await(const AwaitLine& wanted);
  void pause(Milliseconds duration);
  void report(Report::Kind kind, const std::string& text);

  DriverListener driverListener_;
  const Surroundings surroundings_;
  const std::vector<UserStep> steps_;
  Descriptor news_;

  mutable std::mutex mutex_; // for what follows
  std::condition_variable changed_;
  std::vector<std::string> lines_;
  std::size_t next_ = 0; // of the lines, the first to wait for
  std::size_t step_ = 0;
  bool leaves_ = false;
  std::vector<Report> reports_;

  std::thread thread_;
};

} // namespace icloud
