// How tests start the simulated daemon and its tools.

#include "SimulatedSystem.h"

#include "harness/Waiting.h"

#include <csignal>

#include <unistd.h>

namespace icloud::test {
namespace {

constexpr const char* scenarioName = "test.scenario";

Launch onChannel(const std::filesystem::path& program, std::vector<std::string> arguments,
                 const Channel& channel) {
  Launch launch{program, std::move(arguments), {}};
  launch.output = launch.error = channel.childEnd();
  return launch;
}

} // namespace

Tool::Tool(const std::filesystem::path& program, std::vector<std::string> arguments,
           Channel channel)
    : channel_(std::move(channel)), process_(onChannel(program, std::move(arguments), channel_)) {
  channel_.closeChildEnd();
}

void SimulatedSystem::play(const std::string& scenario, const std::string& beginAfter) {
  start(sandbox_.root().bird(), scenario, beginAfter);
}

void SimulatedSystem::playSupervised(const std::string& scenario, const std::string& beginAfter) {
  start(sandbox_.root().launchd(), scenario, beginAfter);
}

void SimulatedSystem::start(const std::filesystem::path& program, const std::string& scenario,
                            const std::string& beginAfter) {
  folder_.write(scenarioName, scenario);
  std::vector<std::string> arguments = birdArguments();
  if (!beginAfter.empty())
    arguments.insert(arguments.end(), {"--begin-after", beginAfter});
  bird_.emplace(program, arguments, Channel::pipe());
  bird_->output().readUntil(" ready\n");
}

std::vector<std::string> SimulatedSystem::birdArguments() const {
  return {"--home", sandbox_.home(), "--scenario", folder_.path() / scenarioName};
}

void SimulatedSystem::killBird() {
  bird_->process().signal(SIGKILL);
  driftmark::test::awaitExit(bird_->process());
}

void SimulatedSystem::resume() {
  std::vector<std::string> arguments = birdArguments();
  arguments.emplace_back("--resume");
  bird_.emplace(sandbox_.root().bird(), arguments, Channel::pipe());
  bird_->output().readUntil(" resumed\n");
}

Tool SimulatedSystem::brctl(std::vector<std::string> arguments, Channel channel) const {
  return {sandbox_.root().brctl(), std::move(arguments), std::move(channel)};
}

Finished SimulatedSystem::runBrctl(std::vector<std::string> arguments) const {
  return runToEnd({sandbox_.root().brctl(), std::move(arguments), {}});
}

Finished runWithoutPrivileges(const std::filesystem::path& program,
                              std::vector<std::string> arguments) {
  if (geteuid() != 0)
    return runToEnd({program, std::move(arguments), {}});
  arguments.insert(arguments.begin(),
                   {"--bounding-set=-dac_override,-dac_read_search,-fowner", program});
  return runToEnd({"/usr/bin/setpriv", std::move(arguments), {}});
}

} // namespace icloud::test
