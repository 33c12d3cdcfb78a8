// The command line of the soak.

#include "soak/Soak.h"

#include <charconv>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string_view>

#include <sysexits.h>

namespace {

constexpr const char* usage =
    "usage: driftmark_soak PROGRAM TOOLS SCENARIO MINUTES\n"
    "\n"
    "Runs PROGRAM against a simulated iCloud that plays SCENARIO, with the tools of the\n"
    "system root TOOLS, for MINUTES, which are at least 2. Exit status 0: nothing grows.\n";

} // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  if (argc == 2 && std::string_view(argv[1]) == "--help") {
    std::fputs(usage, stdout);
    return EX_OK;
  }
  int minutes = 0;
  const std::string_view number = argc == 5 ? argv[4] : "";
  const auto parsed = std::from_chars(number.data(), number.data() + number.size(), minutes);
  if (parsed.ec != std::errc{} || parsed.ptr != number.data() + number.size() || minutes < 2) {
    std::fputs("driftmark_soak: wrong arguments; see --help\n", stderr);
    return 2;
  }
  try {
    return driftmark::soak::Soak({.program = std::filesystem::absolute(argv[1]),
                                  .tools = argv[2],
                                  .scenario = argv[3],
                                  .duration = std::chrono::minutes(minutes)})
        .run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "driftmark_soak: %s\n", error.what());
    return EX_OSERR;
  }
}
