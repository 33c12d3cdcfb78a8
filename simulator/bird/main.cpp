#include "bird/Bird.h"
#include "bird/Privileges.h"
#include "scenario/ScenarioError.h"

#include <csignal>
#include <cstdio>

#include <sysexits.h>

namespace {

int checkScenario(const icloud::BirdOptions& options) {
  const auto scenario = icloud::readScenario(options.scenario);
  std::printf("%s: %zu steps in %.1f s, %zu expectations\n", scenario.file.c_str(),
              scenario.story.size(), std::chrono::duration<double>(scenario.length()).count(),
              scenario.expectations.size());
  return EX_OK;
}

int serve(const icloud::BirdOptions& options) {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGIO, SIG_IGN); // somebody waits for a file that is being evicted
  const auto scenario = icloud::readScenario(options.scenario);
  icloud::heedPermissions();
  icloud::Bird(options, icloud::SystemRoot::ofThisProgram(), scenario).run();
  return EX_OK;
}

int run(const std::vector<std::string>& arguments) {
  const auto options = icloud::BirdOptions::from(arguments);
  if (options.help) {
    std::fputs(icloud::BirdOptions::usage(), stdout);
    return EX_OK;
  }
  return options.check ? checkScenario(options) : serve(options);
}

} // namespace

int main(int argc, char** argv) {
  try {
    return run({argv + 1, argv + argc});
  } catch (const icloud::UsageError& error) {
    std::fprintf(stderr, "bird: %s\n%s", error.what(), icloud::BirdOptions::usage());
    return EX_USAGE;
  } catch (const icloud::ScenarioError& error) {
    std::fprintf(stderr, "bird: %s\n", error.what());
    return EX_DATAERR;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bird: %s\n", error.what());
    return EX_OSERR;
  }
}
