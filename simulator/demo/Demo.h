#pragma once

#include "demo/DemoOptions.h"
#include "demo/Narrator.h"
#include "demo/Summary.h"
#include "demo/World.h"
#include "process/Launch.h"
#include "process/LineReader.h"
#include "scenario/Scenario.h"

#include <chrono>
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

  /// Where to run the program from: out of a copy of its bundle in /Applications, when it lies in one.
  std::filesystem::path installedProgram() const;
  void startProgram();
  void hearBird(const std::string& line);
  void beginEnding();
  void watch();
  bool wait();
  int timeLeft() const;
  void overrun();
  void takeSignal();
  void programEnded();
  void birdEnded();
  void endChildren();
  void checkOrphans();
  Summary makeSummary() const;

  DemoOptions options_;
  Scenario scenario_;
  Narrator narrator_;
  World world_;
  Descriptor signals_;
  std::optional<ChildProcess> bird_;
  std::optional<ChildProcess> program_;
  LineReader birdLines_;
  LineReader programLines_;
  Clock::time_point deadline_;
  bool ending_ = false;
  bool over_ = false;
  int interruption_ = 0;
  std::vector<std::string> storyProblems_;
  std::vector<std::string> endProblems_;
  std::vector<std::string> orphanProblems_;
};

} // namespace icloud
