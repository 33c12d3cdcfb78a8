// What `xdg-open` logs.
#include "common/Descriptor.h"
#include "common/SystemFailure.h"
#include "common/SystemRoot.h"
#include "common/UsageError.h"

#include <cstdio>
#include <string>

#include <fcntl.h>
#include <sysexits.h>

namespace {

constexpr const char* usage = "usage: xdg-open PATH   logs PATH instead of opening it\n";

void appendToLog(const std::string& line) {
  using namespace icloud;
  const auto folder = SystemRoot::ofThisProgram().logFolder();
  std::filesystem::create_directories(folder);
  const auto file = folder / "xdg-open.log";
  const Descriptor log(open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
  if (!log || write(log.get(), line.data(), line.size()) != static_cast<ssize_t>(line.size()))
    throwSystemFailure("cannot write " + file.string());
}

} // namespace

int main(int argc, char** argv) {
  if (icloud::answersHelp(argc, argv, usage))
    return 0;
  if (argc != 2 || argv[1][0] == '-') {
    std::fputs(usage, stderr);
    return 1;
  }
  try {
    appendToLog("xdg-open " + std::string(argv[1]) + "\n");
    return EX_OK;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "xdg-open: %s\n", error.what());
    return 4;
  }
}
