#pragma once

#include "scenario/ActionReader.h"
#include "scenario/Scenario.h"
#include "scenario/ScenarioLine.h"

#include <string>
#include <string_view>

namespace icloud {

/// Turns the lines of a scenario into its steps and expectations.
class ScenarioParser {
public:
  explicit ScenarioParser(const std::string& file);

  void readLine(std::string_view text);

  /// The scenario, once every line was read.
  Scenario finish();

private:
  void readDirective(ScenarioLine& line);
  void readExpectation(ScenarioLine& line, Expectation::Kind kind);
  void readUserStep(ScenarioLine& line);
  void readStep(ScenarioLine& line);
  void place(Step step, const ScenarioLine& line);

  Scenario scenario_;
  unsigned lineNumber_ = 0;
  ActionReader actions_;
};

} // namespace icloud
