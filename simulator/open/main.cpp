// What `open` accepts, and how it reports failures.
#include "common/SystemRoot.h"
#include "common/UsageError.h"
#include "open/Application.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using namespace icloud;
namespace fs = std::filesystem;

constexpr const char* usage = "usage: open PATH   opens the application at PATH\n";

int run(const std::vector<std::string>& arguments) {
  if (arguments.size() != 1 || arguments.front().starts_with("-")) {
    std::fputs(usage, stderr);
    return EXIT_FAILURE;
  }
  std::string shown = fs::absolute(arguments.front()).lexically_normal();
  if (shown.size() > 1 && shown.ends_with('/'))
    shown.pop_back();
  const SystemRoot root = SystemRoot::ofThisProgram();
  const fs::path bundle = root.resolve(shown);
  if (!fs::exists(bundle))
    throw OpenFailure("The file " + shown + " does not exist.");
  startApplication(bundle, shown, root.logFolder() / (bundle.stem().string() + ".log"));
  return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv) {
  if (icloud::answersHelp(argc, argv, usage))
    return 0;
  try {
    return run({argv + 1, argv + argc});
  } catch (const OpenFailure& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "open: %s\n", error.what());
  }
  return EXIT_FAILURE;
}
