#pragma once

#include "demo/DemoOptions.h"
#include "demo/Reporter.h"
#include "demo/Sandbox.h"
#include "demo/ScenarioUser.h"
#include "demo/Summary.h"
#include "process/ChildProcess.h"
#include "process/Pipe.h"
#include "scenario/Scenario.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace icloud {

/// Runs a program against a simulated iCloud from the beginning of a scenario to its end, and
/// compares what happens with what the scenario expects.
class Demo {
public:
  explicit Demo(const DemoOptions& options);

  /// Returns the exit status: 0 without a deviation, 1 with one, 128 and the signal when
  /// interrupted.
  int run();

private:
  using Clock = std::chrono::steady_clock;

  // Demo.cpp
  void printIntroduction();
  void startBird();
  void startProgram();
  void handleBirdLine(const std::string& line);
  void handleDesktopLine(const std::string& line);
  void handleProgramLine(const std::string& line);
  void handleEvent(const std::string& text);
  void handleUserReports();
  void scenarioEnded();
  void watch();
  bool waitForInput();
  int pollTimeout() const;
  void readSignal();

  // Shutdown.cpp
  bool userQuitsProgram() const;
  void beginShutdown();
  void timedOut();
  void programEnded();
  void launchdEnded();
  void stopUser();
  void endChildren();
  void checkOrphans();
  Summary makeSummary() const;

  DemoOptions options_;
  Scenario scenario_;
  Reporter reporter_;
  Sandbox sandbox_;
  Descriptor signals_;
  std::optional<ChildProcess> launchd_;
  std::optional<ChildProcess> program_;
  LineReader birdLines_;
  LineReader programLines_;
  LineReader desktopLines_;
  std::unique_ptr<ScenarioUser> user_; // absent when the scenario has none, and interactively
  Clock::time_point deadline_;
  bool scenarioEnded_ = false;
  bool userFinished_ = true;
  bool isShuttingDown_ = false;
  bool isOver_ = false;
  int interruption_ = 0; // the signal
  std::vector<std::string> scenarioProblems_;
  std::vector<std::string> userProblems_;
  std::vector<std::string> exitProblems_;
  std::vector<std::string> orphanProblems_;
};

} // namespace icloud
