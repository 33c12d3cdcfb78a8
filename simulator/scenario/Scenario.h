#pragma once

#include "scenario/Action.h"
#include "scenario/Expectation.h"
#include "scenario/UserStep.h"

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace icloud {

/// A scenario that cannot be played; the message begins with the file and the line.
class ScenarioError : public std::runtime_error {
public:
  ScenarioError(const std::string& file, unsigned line, const std::string& message)
      : std::runtime_error(file + ":" + std::to_string(line) + ": " + message) {}
};

/// One line of a scenario that changes the cloud.
struct Step {
  std::optional<Milliseconds> at; ///< absent: part of the initial state
  Action action;
  unsigned line = 0;
  std::string text; ///< as written, without the time
};

/// What happens to a drive, what a user does meanwhile, and what a program that watches the drive
/// must log.
struct Scenario {
  std::string file;
  std::string title;
  std::optional<std::string> stallAfter; ///< seconds, as a decimal number
  std::vector<Step> initialState;
  std::vector<Step> steps;    ///< by time
  std::vector<UserStep> user; ///< in their order
  std::vector<Expectation> expectations;

  Milliseconds length() const;

  /// Whether its steps start again after the last one.
  bool repeats() const;
};

/// Reads a scenario. Throws ScenarioError, or std::system_error when the file cannot be read.
Scenario readScenario(const std::filesystem::path& file);

/// Parses the text of a scenario; messages call its file `name`. Throws ScenarioError.
Scenario parseScenario(const std::string& text, const std::string& name);

} // namespace icloud
