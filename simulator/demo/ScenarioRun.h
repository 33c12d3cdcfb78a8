#pragma once

#include "common/Descriptor.h"
#include "demo/Sandbox.h"
#include "demo/ScenarioUser.h"
#include "process/ChildProcess.h"
#include "process/Pipe.h"
#include "scenario/Scenario.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace icloud {

/// A scenario that runs in a sandbox: bird under launchd, a program, and the scenario's user.
/// SIGINT, SIGTERM and SIGHUP interrupt it. One thread.
class ScenarioRun {
public:
  /// Receives what happens, during `waitForInput`.
  class Listener {
  public:
    virtual ~Listener() = default;
    virtual void birdPrinted(const std::string& line) = 0;
    virtual void programPrinted(const std::string& line) = 0;
    virtual void userHasReports() = 0;

    /// The program ended; what it wrote before was passed on.
    virtual void programEnded() = 0;
    virtual void launchdEnded() = 0;

    /// The desktop was asked to open a file.
    virtual void desktopPrinted(const std::string& line) = 0;
  };

  /// Copies the tools from the system root `tools`. The listener outlives this object. Throws
  /// ScenarioError or std::system_error.
  ScenarioRun(const std::filesystem::path& tools, const std::filesystem::path& scenario,
              Listener& listener);

  /// Starts bird, which prints "ready" when the program may be started. It plays the scenario once
  /// every feed and report was requested.
  void startBird();

  /// Starts `program`; on the screen in memory with the scenario's user, if it has one, whose
  /// screenshots go to `screenshots`.
  void startProgram(const std::filesystem::path& program, Screen screen,
                    const std::optional<std::filesystem::path>& screenshots = std::nullopt);

  /// Waits for something to happen and passes it on. Returns false when nothing does within
  /// `timeout`, which is unlimited without a value.
  bool waitForInput(std::optional<std::chrono::milliseconds> timeout);

  /// Ends the program, if it runs, and passes on what it wrote. Returns the status as `waitpid`
  /// does.
  int endProgram(std::chrono::milliseconds gracePeriod);

  /// The signal that interrupted the run; 0 without one.
  int interruption() const { return interruption_; }

  const Scenario& scenario() const { return scenario_; }
  const Sandbox& sandbox() const { return sandbox_; }
  ChildProcess& launchd() { return *launchd_; }

  /// Absent before its start.
  std::optional<ChildProcess>& program() { return program_; }
  bool programRuns() const { return program_ && !program_->hasEnded(); }

  /// Absent before the start of the program, and where there is none.
  ScenarioUser* user() const { return user_.get(); }

private:
  void readSignal();

  Listener& listener_;
  std::filesystem::path file_;
  Scenario scenario_;
  Sandbox sandbox_;
  Descriptor signals_;
  std::optional<ChildProcess> launchd_;
  std::optional<ChildProcess> program_;
  LineReader birdLines_;
  LineReader programLines_;
  LineReader desktopLines_;
  std::unique_ptr<ScenarioUser> user_;
  int interruption_ = 0;
};

} // namespace icloud
