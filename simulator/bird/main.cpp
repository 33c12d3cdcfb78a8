// How the daemon starts, and how it reports that it cannot.
#include "bird/Bird.h"
#include "common/SystemFailure.h"
#include "common/UsageError.h"

#include <array>
#include <csignal>
#include <cstdio>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <sysexits.h>
#include <unistd.h>

namespace {

int checkScenario(const icloud::BirdOptions& options) {
  const auto scenario = icloud::readScenario(options.scenario);
  std::printf("%s: %zu steps in %.1f s, %zu expectations\n", scenario.file.c_str(),
              scenario.steps.size(), std::chrono::duration<double>(scenario.length()).count(),
              scenario.expectations.size());
  return EX_OK;
}

// File permissions apply to this process even when root runs it.
void dropFilePrivileges() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets{};
  if (syscall(SYS_capget, &header, sets.data()) != 0)
    icloud::throwSystemFailure("cannot read the capabilities of this process");
  sets[0].effective &= ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH);
  if (syscall(SYS_capset, &header, sets.data()) != 0)
    icloud::throwSystemFailure("cannot drop capabilities of this process");
}

int serve(const icloud::BirdOptions& options) {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGIO, SIG_IGN); // another process waits for a file that is being evicted
  const auto scenario = icloud::readScenario(options.scenario);
  dropFilePrivileges();
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
