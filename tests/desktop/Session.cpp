// How a test gets a session of its own and starts programs in it.

#include "desktop/Session.h"

#include "common/SystemFailure.h"
#include "harness/BuiltFiles.h"
#include "harness/Orphans.h"
#include "harness/Waiting.h"

#include <fstream>
#include <stdexcept>

#include <unistd.h>

namespace driftmark::test {

namespace fs = std::filesystem;

namespace {

void makePrivateFolder(const fs::path& folder) {
  fs::create_directory(folder);
  fs::permissions(folder, fs::perms::owner_all);
}

void giveAway(const fs::path& path, uid_t user) {
  if (lchown(path.c_str(), user, user) != 0)
    icloud::throwSystemFailure("cannot give " + path.string() + " away");
}

} // namespace

Session::Session() : driverListener_(folder_.path()), variables_(driverListener_.environment()) {
  for (const char* const name : {"run", "tmp", "bus"})
    makePrivateFolder(folder() / name);
  fs::create_directory(root());
  // Without this the program would ask whether to move to Applications.
  fs::create_directories(home() / ".config/driftmark");
  std::ofstream(home() / ".config/driftmark/settings.json")
      << R"({"skipUserApplicationsInstall": true})";
  variables_["HOME"] = home();
  variables_["TMPDIR"] = folder() / "tmp";
  variables_["XDG_RUNTIME_DIR"] = folder() / "run";
  variables_["DRIFTMARK_SYSTEM_ROOT"] = root();
  // Without this variable, Qt finds a bus through the display.
  variables_["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + (folder() / "no bus").string();
  for (const char* const name :
       {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "XDG_CONFIG_HOME", "XDG_DATA_HOME",
        "XDG_CACHE_HOME", "XDG_STATE_HOME", "XDG_CURRENT_DESKTOP", "AT_SPI_BUS_ADDRESS"})
    variables_[name] = std::nullopt;
}

Session::~Session() {
  bus_.reset();
  display_.reset();
  Orphans::endAll();
}

Display& Session::openDisplay() {
  display_.emplace();
  variables_["DISPLAY"] = display_->name();
  return *display_;
}

SessionBus& Session::openBus() {
  bus_.emplace(folder() / "bus", variables_);
  variables_["DBUS_SESSION_BUS_ADDRESS"] = bus_->address();
  return *bus_;
}

void Session::installTools() const {
  fs::copy(simulatedTools(), root(), fs::copy_options::recursive);
}

void Session::writeTool(const std::string& path, const std::string& script) const {
  const fs::path tool = root().concat(path);
  fs::create_directories(tool.parent_path());
  std::ofstream(tool) << "#!/bin/sh\n" << script << '\n';
  fs::permissions(tool, fs::perms(0755));
}

void Session::giveTo(uid_t user) const {
  fs::permissions(folder(), fs::perms(0755));
  for (const char* const name : {"home", "run", "tmp"}) {
    giveAway(folder() / name, user);
    for (const auto& entry : fs::recursive_directory_iterator(folder() / name))
      giveAway(entry.path(), user);
  }
}

RunningProgram Session::start(const fs::path& executable, std::vector<std::string> arguments,
                              std::optional<uid_t> user) {
  icloud::Launch launch{executable, std::move(arguments), variables_};
  if (user) {
    const std::string number = std::to_string(*user);
    launch.program = "/usr/bin/setpriv";
    launch.arguments.insert(launch.arguments.begin(), {"--reuid", number, "--regid", number,
                                                       "--clear-groups", "--", executable});
  }
  return RunningProgram(std::move(launch));
}

void Session::run(const fs::path& tool, std::vector<std::string> arguments) const {
  icloud::ChildProcess process({tool, std::move(arguments), variables_});
  if (const int status = awaitExit(process); status != 0)
    throw std::runtime_error(tool.string() + " ended with " + icloud::describeEnd(status));
}

std::vector<std::string> Session::killLeftovers(std::vector<pid_t> others) const {
  if (display_)
    others.push_back(display_->process());
  if (bus_)
    others.push_back(bus_->process());
  return Orphans::endAll(others);
}

} // namespace driftmark::test
