// Which processes `killall` ends.
#include "common/SystemFailure.h"
#include "common/SystemRoot.h"
#include "common/UsageError.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <vector>

namespace {

using namespace icloud;
namespace fs = std::filesystem;

constexpr const char* usage = "usage: killall NAME   sends SIGTERM to every process called NAME\n";

bool parseNumber(const std::string& text, pid_t& number) {
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
  return parsed.ec == std::errc{} && parsed.ptr == text.data() + text.size();
}

/// The processes that run a program of this name from inside the root.
std::vector<pid_t> processesCalled(const std::string& name, const SystemRoot& root) {
  std::vector<pid_t> found;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    pid_t process = 0;
    if (!parseNumber(entry.path().filename(), process))
      continue;
    std::error_code gone;
    const fs::path program = fs::read_symlink(entry.path() / "exe", gone);
    if (!gone && program.filename() == name &&
        program.string().starts_with(root.path().string() + "/"))
      found.push_back(process);
  }
  return found;
}

int run(const std::string& name) {
  int status = EXIT_FAILURE;
  bool found = false;
  for (const pid_t process : processesCalled(name, SystemRoot::ofThisProgram())) {
    if (kill(process, SIGTERM) == 0) {
      status = EXIT_SUCCESS;
      found = true;
    } else if (errno != ESRCH) {
      std::fprintf(stderr, "killall: warning: kill -TERM %d: %s\n", process,
                   std::generic_category().message(errno).c_str());
      found = true;
    }
  }
  if (!found)
    std::fputs("No matching processes belonging to you were found\n", stderr);
  return status;
}

} // namespace

int main(int argc, char** argv) {
  if (icloud::answersHelp(argc, argv, usage))
    return 0;
  if (argc != 2 || argv[1][0] == '-') {
    std::fputs(usage, stderr);
    return EXIT_FAILURE;
  }
  try {
    return run(argv[1]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "killall: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
