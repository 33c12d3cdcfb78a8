#pragma once

#include "demo/DemoOptions.h"
#include "demo/Reporter.h"
#include "demo/ScenarioRun.h"
#include "demo/Summary.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace icloud {

/// Runs a program against a simulated iCloud from the beginning of a scenario to its end, and
/// compares what happens with what the scenario expects.
class Demo : private ScenarioRun::Listener {
public:
  explicit Demo(const DemoOptions& options);

  /// Returns the exit status: 0 without a deviation, 1 with one, 128 and the signal when
  /// interrupted.
  int run();

private:
  using Clock = std::chrono::steady_clock;

  // Demo.cpp
  void printIntroduction();
  void printCommands();
  void startProgram();
  void birdPrinted(const std::string& line) override;
  void programPrinted(const std::string& line) override;
  void userHasReports() override;
  void desktopPrinted(const std::string& line) override;
  void handleEvent(const std::string& text);
  void scenarioEnded();
  void watch();
  std::optional<std::chrono::milliseconds> timeLeft() const;

  // Shutdown.cpp
  bool userQuitsProgram() const;
  void beginShutdown();
  void timedOut();
  void programEnded() override;
  void launchdEnded() override;
  void stopUser();
  void endChildren();
  void checkOrphans();
  Summary makeSummary() const;

  DemoOptions options_;
  Reporter reporter_;
  ScenarioRun run_;
  std::optional<Clock::time_point> deadline_; // absent: none
  bool scenarioEnded_ = false;
  bool userFinished_ = true;
  bool isShuttingDown_ = false;
  bool isOver_ = false;
  std::vector<std::string> scenarioProblems_;
  std::vector<std::string> userProblems_;
  std::vector<std::string> exitProblems_;
  std::vector<std::string> orphanProblems_;
};

} // namespace icloud
