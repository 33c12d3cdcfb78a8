// How launchd starts.
#include "launchd/Supervisor.h"

#include <cstdio>

#include <sysexits.h>

int main(int argc, char** argv) {
  try {
    return icloud::Supervisor(icloud::SystemRoot::ofThisProgram(), {argv + 1, argv + argc}).run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "launchd: %s\n", error.what());
    return EX_OSERR;
  }
}
