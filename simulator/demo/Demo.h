#pragma once

#include "demo/Attendant.h"
#include "demo/DemoOptions.h"
#include "demo/Narrator.h"
#include "demo/Summary.h"
#include "demo/World.h"
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
  void hearPerson();
  void tellStory(const std::string& text);
  void storyEnded();
  bool personQuits() const;
  void beginEnding();
  void watch();
  bool wait();
  int timeLeft() const;
  void overrun();
  void takeSignal();
  void programEnded();
  void personLeaves();
  void launchdEnded();
  void endChildren();
  void checkOrphans();
  Summary makeSummary() const;

  DemoOptions options_;
  Scenario scenario_;
  Narrator narrator_;
  World world_;
  Descriptor signals_;
  std::optional<ChildProcess> launchd_;
  std::optional<ChildProcess> program_;
  LineReader birdLines_;
  LineReader programLines_;
  LineReader desktopLines_;
  std::unique_ptr<Attendant> attendant_; // none where the scenario has no person, or you are it
  Clock::time_point deadline_;
  bool storyOver_ = false;
  bool personDone_ = true;
  bool ending_ = false;
  bool over_ = false;
  int interruption_ = 0;
  std::vector<std::string> storyProblems_;
  std::vector<std::string> personProblems_;
  std::vector<std::string> endProblems_;
  std::vector<std::string> orphanProblems_;
};

} // namespace icloud
