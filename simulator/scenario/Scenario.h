#pragma once

#include "scenario/Action.h"
#include "scenario/Expectation.h"
#include "scenario/UserStep.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace icloud {

/// One line of a scenario that does something.
struct Step {
  std::optional<Milliseconds> at; ///< absent: before the story begins
  Action action;
  unsigned line = 0;
  std::string text; ///< as it was written, without the time
};

/// A story about a drive, and what a program that watches it has to say.
struct Scenario {
  std::string file;
  std::string title;
  std::optional<std::string> stallAfter; ///< seconds, as a decimal number
  std::vector<Step> stage;               ///< what is there before the story begins
  std::vector<Step> story;               ///< by time
  std::vector<UserStep> user;            ///< one after the other
  std::vector<Expectation> expectations;

  Milliseconds length() const;
};

/// Reads a scenario. Throws ScenarioError, or std::system_error when the file cannot be read.
Scenario readScenario(const std::filesystem::path& file);

/// The same from text; `name` stands for the file in messages.
Scenario parseScenario(const std::string& text, const std::string& name);

} // namespace icloud
