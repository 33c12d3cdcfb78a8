#pragma once

#include "common/Descriptor.h"
#include "demo/Sandbox.h"
#include "demo/ScenarioUser.h"
#include "process/ChildProcess.h"
#include "process/Pipe.h"
#include "process/ProcessCost.h"
#include "scenario/Scenario.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace driftmark::soak {

/// What a soak runs, and for how long.
struct Options {
  std::filesystem::path program;
  std::filesystem::path tools; ///< a system root to copy the tools from
  std::filesystem::path scenario;
  std::chrono::seconds duration{};
};

/// Runs a program for a long time against a simulated iCloud whose scenario and user repeat their
/// steps, and prints every ten seconds what the program holds.
class Soak {
public:
  explicit Soak(const Options& options);

  /// Returns the exit status: 0 when nothing has grown or failed, 1 otherwise, 128 and the signal
  /// when interrupted.
  int run();

private:
  using Clock = std::chrono::steady_clock;

  void startBird();
  void startProgram();
  void handleBirdLine(const std::string& line);
  void handleProgramLine(const std::string& line);
  void handleUserReports();
  void waitForInput();
  void readSignal();
  void takeSample();
  void endInterval(Clock::time_point now);
  void endProgram();
  void fail(const std::string& problem);
  int report();

  Options options_;
  icloud::Scenario scenario_;
  icloud::Sandbox sandbox_;
  icloud::Descriptor signals_;
  icloud::LineReader birdLines_;
  icloud::LineReader programLines_;
  std::optional<icloud::ChildProcess> launchd_;
  std::optional<icloud::ChildProcess> program_;
  std::unique_ptr<icloud::ScenarioUser> user_;
  std::deque<std::string> lastLines_; ///< of the program's log

  Clock::time_point nextSample_ = Clock::time_point::max();
  Clock::time_point begin_;         ///< of the program
  Clock::time_point intervalBegin_; ///< of the samples
  std::chrono::duration<double> intervalTime_{};
  std::uint64_t intervalBytes_ = 0;
  std::vector<icloud::ProcessHoldings> samples_;
  std::vector<icloud::ProcessHoldings> figures_; ///< of every interval so far
  std::vector<std::string> problems_;
  bool isOver_ = false;
  int interruption_ = 0; ///< the signal
};

} // namespace driftmark::soak
