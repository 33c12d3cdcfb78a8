// What the daemon accepts on its command line.
#include "bird/BirdOptions.h"

#include "common/Requests.h"
#include "common/UsageError.h"

#include <algorithm>
#include <sstream>

namespace icloud {
namespace {

std::set<std::string> requestList(const std::string& text) {
  std::set<std::string> names;
  std::istringstream stream(text);
  for (std::string name; std::getline(stream, name, ',');) {
    if (std::find(requestNames.begin(), requestNames.end(), name) == requestNames.end())
      throw UsageError("no request is called \"" + name + "\"");
    names.insert(name);
  }
  return names;
}

} // namespace

const char* BirdOptions::usage() {
  return "usage: bird --home DIR --scenario FILE [--begin-after REQUEST,...] [--resume]\n"
         "       bird --check FILE\n"
         "\n"
         "Owns the simulated iCloud Drive below DIR, plays the scenario on it and serves brctl.\n"
         "The scenario begins at once, or after each REQUEST (items, global, status, quota) was\n"
         "served; with --resume it continues where an earlier daemon stopped. --check only reads\n"
         "a scenario and reports its mistakes.\n";
}

BirdOptions BirdOptions::from(const std::vector<std::string>& arguments) {
  BirdOptions options;
  for (std::size_t index = 0; index < arguments.size(); ++index) {
    const std::string& name = arguments[index];
    const auto value = [&] {
      if (index + 1 == arguments.size())
        throw UsageError(name + " needs a value");
      return arguments[++index];
    };
    if (name == "--help")
      options.help = true;
    else if (name == "--resume")
      options.resume = true;
    else if (name == "--home")
      options.home = value();
    else if (name == "--scenario")
      options.scenario = value();
    else if (name == "--begin-after")
      options.beginAfter = requestList(value());
    else if (name == "--check") {
      options.check = true;
      options.scenario = value();
    } else
      throw UsageError("unknown argument: " + name);
  }
  if (!options.help && (options.scenario.empty() || (options.home.empty() && !options.check)))
    throw UsageError("--home and --scenario are needed");
  return options;
}

} // namespace icloud
