// What `ditto` does with its arguments.
#include "common/SystemRoot.h"
#include "common/UsageError.h"
#include "ditto/Ditto.h"
#include "ditto/DittoCommand.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <system_error>

namespace {

using namespace icloud;

void run(const Command& command, const SystemRoot& root) {
  const auto source = root.resolve(command.source);
  const auto target = std::filesystem::absolute(root.resolve(command.target));
  switch (command.kind) {
  case Command::Kind::copy:
    return copyTree(source, target);
  case Command::Kind::pack:
    return pack(source, target, command.keepParent);
  case Command::Kind::unpack:
    return unpack(source, target);
  }
}

} // namespace

int main(int argc, char** argv) {
  if (answersHelp(argc, argv, Command::usage()))
    return EXIT_SUCCESS;
  std::setlocale(LC_CTYPE, "C.UTF-8");
  try {
    run(Command::from({argv + 1, argv + argc}), SystemRoot::ofThisProgram());
    return EXIT_SUCCESS;
  } catch (const UsageError& error) {
    std::fprintf(stderr, "ditto: %s\n%s", error.what(), Command::usage());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "ditto: %s\n", error.what());
  }
  return EXIT_FAILURE;
}
