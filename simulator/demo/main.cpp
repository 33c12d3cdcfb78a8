#include "demo/Demo.h"
#include "scenario/Scenario.h"

#include <csignal>
#include <cstdio>

#include <sysexits.h>

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  try {
    const auto options = icloud::DemoOptions::from({argv + 1, argv + argc});
    if (options.help) {
      std::fputs(icloud::DemoOptions::usage(), stdout);
      return EX_OK;
    }
    return icloud::Demo(options).run();
  } catch (const icloud::UsageError& error) {
    std::fprintf(stderr, "icloud-demo: %s\n%s", error.what(), icloud::DemoOptions::usage());
    return EX_USAGE;
  } catch (const icloud::ScenarioError& error) {
    std::fprintf(stderr, "icloud-demo: %s\n", error.what());
    return EX_DATAERR;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "icloud-demo: %s\n", error.what());
    return EX_OSERR;
  }
}
