#pragma once

#include "demo/DemoOptions.h"
#include "demo/Reporter.h"
#include "demo/Sandbox.h"
#include "demo/ScenarioUser.h"
#include "demo/Summary.h"
#include "process/Launch.h"
#include "process/LineReader.h"
#include "scenario/Scenario.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace icloud {

/// Lets a program watch a simulated iCloud from the beginning of a story to its end.
class Demo {
public:
  explicit Demo(const DemoOptions& options);

  /// The exit status: 0 without a deviation, 1 with one, 128 and the signal when interrupted.
  int run();

private:
  using Clock = std::chrono::steady_clock;

  void introduce();
  void startBird();
  void startProgram();
  void hearBird(const std::string& line);
  void hearDesktop(const std::string& line);
  void takeUserReports();
  void tellStory(const std::string& text);
  void storyEnded();
  bool userQuits() const;
  void beginShutdown();
  void watch();
  bool wait();
  int timeLeft() const;
  void overrun();
  void takeSignal();
  void programEnded();
  void userLeaves();
  void launchdEnded();
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
  std::unique_ptr<ScenarioUser> user_; // none where the scenario has no user, or you are it
  Clock::time_point deadline_;
  bool storyOver_ = false;
  bool userDone_ = true;
  bool ending_ = false;
  bool over_ = false;
  int interruption_ = 0;
  std::vector<std::string> storyProblems_;
  std::vector<std::string> userProblems_;
  std::vector<std::string> endProblems_;
  std::vector<std::string> orphanProblems_;
};

} // namespace icloud
