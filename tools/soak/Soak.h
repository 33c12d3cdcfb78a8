#pragma once

#include "demo/ScenarioRun.h"
#include "process/ProcessCost.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
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
class Soak : private icloud::ScenarioRun::Listener {
public:
  explicit Soak(const Options& options);

  /// Returns the exit status: 0 when nothing has grown or failed, 1 otherwise, 128 and the signal
  /// when interrupted.
  int run();

private:
  using Clock = std::chrono::steady_clock;

  void birdPrinted(const std::string& line) override;
  void programPrinted(const std::string& line) override;
  void userHasReports() override;
  void programEnded() override;
  void launchdEnded() override;
  void desktopPrinted(const std::string& /*line*/) override {}
  void waitForInput();
  void takeSample();
  void endInterval(Clock::time_point now);
  void endProgram();
  void fail(const std::string& problem);
  int report();

  Options options_;
  icloud::ScenarioRun run_;
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
};

} // namespace driftmark::soak
