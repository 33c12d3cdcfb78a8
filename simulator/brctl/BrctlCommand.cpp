// Which command lines `brctl` accepts.
#include "brctl/BrctlCommand.h"

#include "common/UsageError.h"

namespace icloud {
namespace {

struct MonitorArguments {
  bool global = false;
  bool incremental = false;
  std::vector<std::string> containers;
};

MonitorArguments monitorArguments(const std::vector<std::string>& arguments) {
  MonitorArguments found;
  for (std::size_t index = 1; index < arguments.size(); ++index) {
    const std::string& argument = arguments[index];
    if (argument == "-g")
      found.global = true;
    else if (argument == "-i")
      found.incremental = true;
    else if (argument.starts_with("-"))
      throw UsageError("monitor: unknown option " + argument);
    else
      found.containers.push_back(argument);
  }
  return found;
}

Command monitor(const std::vector<std::string>& arguments) {
  const MonitorArguments found = monitorArguments(arguments);
  if (!found.incremental)
    throw UsageError("monitor: -i is needed");
  if (found.global && !found.containers.empty())
    throw UsageError("monitor: -g takes no container");
  if (found.global)
    return {Command::Kind::monitorGlobal, "", {}};
  if (found.containers.size() != 1)
    throw UsageError("monitor: one container is needed");
  return {Command::Kind::monitorItems, found.containers.front(), {}};
}

Command onFiles(Command::Kind kind, const std::vector<std::string>& arguments) {
  Command command{kind, "", {arguments.begin() + 1, arguments.end()}};
  if (command.paths.empty())
    throw UsageError(arguments.front() + ": a path is needed");
  for (const std::string& path : command.paths)
    if (path.starts_with("-"))
      throw UsageError(arguments.front() + ": unknown option " + path);
  return command;
}

} // namespace

const char* Command::usage() {
  return "usage: brctl monitor -i CONTAINER   shows the items of a container as they change\n"
         "       brctl monitor -g -i          shows the progress of all transfers\n"
         "       brctl status                 reports the jobs of the daemon\n"
         "       brctl quota                  shows how much storage is left\n"
         "       brctl evict PATH...          leaves the contents of files only in iCloud\n"
         "       brctl download PATH...       begins to bring them back\n";
}

Command Command::from(const std::vector<std::string>& arguments) {
  if (arguments.empty())
    throw UsageError("a command is needed");
  const std::string& name = arguments.front();
  if (name == "monitor")
    return monitor(arguments);
  if (name == "evict")
    return onFiles(Kind::evict, arguments);
  if (name == "download")
    return onFiles(Kind::download, arguments);
  const bool isPlain = name == "status" || name == "quota" || name == "help" || name == "--help";
  if (!isPlain)
    throw UsageError("unknown command " + name);
  if (arguments.size() > 1)
    throw UsageError(name + " takes no arguments");
  if (name == "status")
    return {Kind::status, "", {}};
  return {name == "quota" ? Kind::quota : Kind::help, "", {}};
}

} // namespace icloud
