#pragma once

#include "demo/Sandbox.h"
#include "harness/BuiltFiles.h"
#include "harness/Channel.h"
#include "harness/RunToEnd.h"
#include "harness/TemporaryFolder.h"
#include "process/ChildProcess.h"

#include <optional>
#include <string>
#include <vector>

namespace icloud::test {

using driftmark::test::Channel;
using driftmark::test::contentsOf;
using driftmark::test::demoProgram;
using driftmark::test::driftmarkProgram;
using driftmark::test::Finished;
using driftmark::test::runToEnd;
using driftmark::test::simulatedTools;
using driftmark::test::sourceFile;
using driftmark::test::TemporaryFolder;

/// A running program whose output and standard error go into a channel.
class Tool {
public:
  Tool(const std::filesystem::path& program, std::vector<std::string> arguments, Channel channel);

  Channel& output() { return channel_; }
  ChildProcess& process() { return process_; }

private:
  Channel channel_;
  ChildProcess process_;
};

/// A system root, a home, and a daemon once `play` was called.
class SimulatedSystem {
public:
  SimulatedSystem() : sandbox_(simulatedTools()) {}

  /// Starts the daemon with a scenario and waits until it is ready. The scenario begins after the
  /// requests of `beginAfter`.
  void play(const std::string& scenario, const std::string& beginAfter = "items");

  /// The same with a daemon that is restarted whenever it ends; `bird` is its supervisor then.
  void playSupervised(const std::string& scenario, const std::string& beginAfter = "items");

  /// Kills the daemon.
  void killBird();

  /// Starts a daemon that continues the scenario where the killed one stopped.
  void resume();

  Tool& bird() { return *bird_; }
  const Sandbox& sandbox() const { return sandbox_; }

  /// Starts `brctl`.
  Tool brctl(std::vector<std::string> arguments, Channel channel) const;

  /// Runs `brctl` to its end.
  Finished runBrctl(std::vector<std::string> arguments) const;

private:
  void start(const std::filesystem::path& program, const std::string& scenario,
             const std::string& beginAfter);
  std::vector<std::string> birdArguments() const;

  TemporaryFolder folder_;
  Sandbox sandbox_;
  std::optional<Tool> bird_;
};

/// Runs a program to its end without the right to ignore file modes, which root has.
Finished runWithoutPrivileges(const std::filesystem::path& program,
                              std::vector<std::string> arguments);

} // namespace icloud::test
