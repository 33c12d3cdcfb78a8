// How launchd starts.
#include "common/UsageError.h"
#include "launchd/Supervisor.h"

#include <cstdio>

#include <sysexits.h>

namespace {

constexpr const char* usage =
    "usage: launchd ARGUMENT...   runs bird with these arguments, again whenever it ends\n";

} // namespace

int main(int argc, char** argv) {
  if (icloud::answersHelp(argc, argv, usage))
    return EX_OK;
  try {
    return icloud::Supervisor(icloud::SystemRoot::ofThisProgram(), {argv + 1, argv + argc}).run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "launchd: %s\n", error.what());
    return EX_OSERR;
  }
}
