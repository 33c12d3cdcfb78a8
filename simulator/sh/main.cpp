// How the shell of this system runs commands.
#include "common/SystemRoot.h"
#include "common/UsageError.h"
#include "sh/CommandText.h"

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <vector>

#include <unistd.h>

namespace {

using namespace icloud;

constexpr const char* machineShell = "/bin/sh";
constexpr const char* usage =
    "usage: sh ARGUMENT...   runs the machine's shell, with the commands of this root\n";
constexpr int cannotRun = 126;

// The argument that follows the options when one of them is -c.
std::string* commandText(std::vector<std::string>& arguments) {
  bool given = false;
  for (std::string& argument : arguments) {
    if (argument == "--")
      continue;
    if (argument.size() < 2 || argument.front() != '-')
      return given ? &argument : nullptr;
    given = given || argument.find('c') != std::string::npos;
  }
  return nullptr;
}

} // namespace

int main(int argc, char** argv) {
  if (answersHelp(argc, argv, usage))
    return 0;
  try {
    const SystemRoot root = SystemRoot::ofThisProgram();
    std::vector<std::string> arguments(argv + 1, argv + argc);
    if (std::string* text = commandText(arguments))
      *text = withCommandsRenamed(*text, [&](const std::string& name) {
        const std::string tool = root.path().string() + name;
        return access(tool.c_str(), X_OK) == 0 ? tool : name;
      });
    std::vector<char*> pointers{argv[0]};
    for (std::string& argument : arguments)
      pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    execv(machineShell, pointers.data());
    std::fprintf(stderr, "sh: %s: %s\n", machineShell,
                 std::generic_category().message(errno).c_str());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "sh: %s\n", error.what());
  }
  return cannotRun;
}
