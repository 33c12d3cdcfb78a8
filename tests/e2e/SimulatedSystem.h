#pragma once

#include "Channel.h"
#include "TemporaryFolder.h"
#include "demo/Sandbox.h"
#include "process/ChildProcess.h"

#include <optional>
#include <string>
#include <vector>

namespace icloud::test {

/// What a tool that ran to its end left behind.
struct Finished {
  int exitStatus = -1; ///< -1 when a signal ended it
  std::string output;
  std::string error;
};

/// A program whose output, standard error included, goes into a channel.
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
  SimulatedSystem() : sandbox_(ICLOUD_TOOLS) {}

  /// Starts the daemon with a scenario and waits until it serves. The story begins after the
  /// requests of `beginAfter`.
  void play(const std::string& scenario, const std::string& beginAfter = "items");

  /// The same with a daemon that is started again whenever it ends; `bird` is its supervisor then.
  void playSupervised(const std::string& scenario, const std::string& beginAfter = "items");

  /// Kills the daemon, so that it can do nothing more.
  void killBird();

  /// Starts a daemon that goes on where the one before came to, with the same scenario.
  void resume();

  Tool& bird() { return *bird_; }
  const Sandbox& sandbox() const { return sandbox_; }

  /// Starts `brctl`.
  Tool brctl(std::vector<std::string> arguments, Channel channel) const;

  /// Runs `brctl` on pipes to its end.
  Finished runBrctl(std::vector<std::string> arguments) const;

private:
  void start(const std::filesystem::path& program, const std::string& scenario,
             const std::string& beginAfter);
  std::vector<std::string> birdArguments() const;

  TemporaryFolder folder_;
  Sandbox sandbox_;
  std::optional<Tool> bird_;
};

/// Runs a program on pipes to its end.
Finished runToEnd(Launch launch);

/// The same for a program that is not let into what its owner has forbidden himself, as one that is
/// not run by root.
Finished runWithoutPrivileges(const std::filesystem::path& program,
                              std::vector<std::string> arguments);

} // namespace icloud::test
