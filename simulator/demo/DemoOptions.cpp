// How the command line of the demo is read.

#include "demo/DemoOptions.h"

#include <charconv>

namespace icloud {
namespace {

std::chrono::seconds secondsFrom(const std::string& text) {
  int seconds = 0;
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (parsed.ec != std::errc{} || parsed.ptr != text.data() + text.size() || seconds < 1)
    throw UsageError("not a number of seconds: " + text);
  return std::chrono::seconds(seconds);
}

} // namespace

const char* DemoOptions::usage() {
  return "usage: icloud-demo --program FILE --scenario FILE [--out DIR] [--timeout SECONDS]\n"
         "                   [--tools DIR] [--interactive]\n"
         "\n"
         "Runs the program against a simulated iCloud that plays the scenario, prints the events\n"
         "of the scenario and the program's log, and compares the log with what the scenario\n"
         "expects. Exit status 0: no deviation.\n"
         "\n"
         "A program inside a bundle is run from a copy of the bundle in /Applications.\n"
         "\n"
         "The scenario's user uses mouse and keyboard on a screen in memory.\n"
         "\n"
         "  --interactive      uses the display and leaves the user to you; the log is not "
         "compared\n"
         "  --out DIR          also writes log.txt, transcript.txt, summary.txt, menus.txt and "
         "the\n"
         "                     user's screenshots there\n"
         "  --timeout SECONDS  gives up this long after the scenario should have ended (150)\n"
         "  --tools DIR        a system root to copy the tools from (\"root\" beside this "
         "program)\n";
}

DemoOptions DemoOptions::from(const std::vector<std::string>& arguments) {
  DemoOptions options;
  for (std::size_t index = 0; index < arguments.size(); ++index) {
    const std::string& name = arguments[index];
    const auto value = [&] {
      if (index + 1 == arguments.size())
        throw UsageError(name + " needs a value");
      return arguments[++index];
    };
    if (name == "--help")
      options.help = true;
    else if (name == "--interactive")
      options.interactive = true;
    else if (name == "--program")
      options.program = std::filesystem::absolute(value());
    else if (name == "--scenario")
      options.scenario = value();
    else if (name == "--tools")
      options.tools = value();
    else if (name == "--out")
      options.out = value();
    else if (name == "--timeout")
      options.timeout = secondsFrom(value());
    else
      throw UsageError("unknown argument: " + name);
  }
  if (!options.help && (options.program.empty() || options.scenario.empty()))
    throw UsageError("--program and --scenario are needed");
  if (options.tools.empty())
    options.tools = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "root";
  return options;
}

} // namespace icloud
