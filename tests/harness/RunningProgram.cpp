// How tests start a program and follow it to its end.

#include "harness/RunningProgram.h"

#include "harness/Waiting.h"

#include <fstream>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace driftmark::test {

namespace {

icloud::Launch withError(icloud::Launch launch, const Channel& log) {
  launch.error = log.childEnd();
  return launch;
}

} // namespace

RunningProgram::RunningProgram(icloud::Launch launch) : process(withError(std::move(launch), log)) {
  log.closeChildEnd();
}

std::string RunningProgram::descriptor(const std::string& number) const {
  const auto folder = std::filesystem::path("/proc") / std::to_string(process.identifier()) / "fd";
  return std::filesystem::read_symlink(folder / number).string();
}

void RunningProgram::limitMemory(std::size_t bytes) const {
  std::ifstream file("/proc/" + std::to_string(process.identifier()) + "/statm");
  std::size_t pages = 0;
  file >> pages;
  const rlim_t limit = pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + bytes;
  const rlimit memory{limit, limit};
  if (!file || prlimit(process.identifier(), RLIMIT_AS, &memory, nullptr) != 0)
    throw std::runtime_error("cannot limit the memory of the program");
}

bool RunningProgram::says(const std::string& text) {
  try {
    log.readUntil(text);
    return true;
  } catch (const TimedOut&) {
    throw;
  } catch (const std::runtime_error&) {
    return false;
  }
}

std::optional<int> RunningProgram::exitStatus() {
  const int status = awaitExit(process);
  return WIFEXITED(status) ? std::optional<int>(WEXITSTATUS(status)) : std::nullopt;
}

} // namespace driftmark::test
