// How tests lay out a machine, sign bundles and start copies of the program.

#include "update/TestMachine.h"

#include "common/SystemFailure.h"
#include "harness/BuiltFiles.h"
#include "harness/Orphans.h"
#include "harness/TemporaryFolder.h"
#include "harness/Waiting.h"
#include "process/ChildProcess.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include <sys/wait.h>
#include <unistd.h>

namespace driftmark::test {
namespace fs = std::filesystem;

namespace {

constexpr uid_t nobody = 65534;

/// Makes hard links where possible: the tools are never written to.
void installTools(const fs::path& root) {
  std::error_code acrossVolumes;
  fs::copy(simulatedTools(), root,
           fs::copy_options::recursive | fs::copy_options::create_hard_links, acrossVolumes);
  if (!acrossVolumes)
    return;
  fs::remove_all(root);
  fs::copy(simulatedTools(), root, fs::copy_options::recursive);
}

} // namespace

TestMachine::TestMachine() : temporaryFiles_(folder() / "tmp") {
  for (const char* name : {"home", "tmp", "run"})
    fs::create_directory(folder() / name);
  fs::permissions(folder() / "run", fs::perms::owner_all);
  installTools(root());
  fs::create_directories(applications());
  fs::create_directories(root() / "var/log");
  driverListener_.emplace(folder());
  variables_ = driverListener_->environment();
  setVariable("QT_QPA_PLATFORM", "offscreen");
  setVariable("DRIFTMARK_SYSTEM_ROOT", root());
  setVariable("HOME", home());
  setVariable("TMPDIR", temporaryFiles_);
  setVariable("XDG_RUNTIME_DIR", folder() / "run");
  for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME",
                           "DBUS_SESSION_BUS_ADDRESS", "DISPLAY", "WAYLAND_DISPLAY"})
    variables_[name] = std::nullopt;
}

TestMachine::~TestMachine() {
  killEverything();
}

fs::path TestMachine::programsTemporaryFolder() const {
  return temporaryFiles_ / ("driftmark-" + std::to_string(user_.value_or(getuid())));
}

fs::path TestMachine::workFolder(pid_t program) const {
  return programsTemporaryFolder() / ("Driftmark-update-" + std::to_string(program));
}

void TestMachine::moveTemporaryFiles(const fs::path& folder) {
  temporaryFiles_ = folder;
  setVariable("TMPDIR", folder);
}

void TestMachine::useUnprivilegedUser() {
  if (getuid() != 0)
    return;
  user_ = nobody;
  fs::permissions(folder(), fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec);
  if (chown(driverListener_->socket().c_str(), nobody, nobody) != 0)
    icloud::throwSystemFailure("cannot give the socket away");
  for (const char* name : {"home", "tmp", "run", "root/Applications", "root/var"})
    giveToUser(folder() / name);
  // That user may have no access to the build folder.
  const fs::path plugins = folder() / "plugins";
  fs::copy(*variables_.at("QT_PLUGIN_PATH"), plugins, fs::copy_options::recursive);
  setVariable("QT_PLUGIN_PATH", plugins);
}

void TestMachine::giveToUser(const fs::path& path) const {
  if (!user_)
    return;
  const auto give = [this](const fs::path& item) {
    if (lchown(item.c_str(), *user_, *user_) != 0)
      icloud::throwSystemFailure("cannot give " + item.string() + " away");
  };
  give(path);
  if (fs::is_directory(fs::symlink_status(path)))
    for (const auto& entry : fs::recursive_directory_iterator(path))
      give(entry.path());
}

void TestMachine::setVariable(const std::string& name, const std::string& value) {
  variables_[name] = value;
}

void TestMachine::writeSettings(const std::string& document) const {
  const fs::path folder = home() / ".config/driftmark";
  fs::create_directories(folder);
  std::ofstream(folder / "settings.json", std::ios::binary) << document;
  giveToUser(home() / ".config");
}

std::string TestMachine::settings() const {
  return contentsOf(home() / ".config/driftmark/settings.json");
}

fs::path TestMachine::placeBundle(const fs::path& folder, const std::string& version,
                                  const std::string& name) const {
  fs::create_directories(folder);
  const fs::path bundle = folder / name;
  fs::copy(driftmarkBundle(), bundle,
           fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  setInformation(bundle, "CFBundleShortVersionString", version);
  sign(bundle);
  giveToUser(bundle);
  return bundle;
}

void TestMachine::setInformation(const fs::path& bundle, const std::string& key,
                                 const std::string& value) {
  const fs::path file = bundle / "Contents/Info.plist";
  std::string text = contentsOf(file);
  const auto found = text.find("<key>" + key + "</key>");
  const auto begin = text.find("<string>", found) + std::string("<string>").size();
  const auto end = text.find("</string>", begin);
  if (found == std::string::npos || end == std::string::npos)
    throw std::runtime_error("the application has no " + key);
  std::ofstream(file, std::ios::binary) << text.replace(begin, end - begin, value);
}

void TestMachine::placeExecutable(const fs::path& folder) const {
  const fs::path name = "Contents/MacOS/Driftmark";
  const fs::path helpers = "Contents/Helpers";
  fs::create_directories((folder / name).parent_path());
  fs::copy(driftmarkBundle() / name, folder / name);
  fs::copy(driftmarkBundle() / helpers, folder / helpers);
  giveToUser(folder);
}

void TestMachine::sign(const fs::path& bundle, const std::string& identity) const {
  const Finished end = run(tool("codesign"), {"-f", "-s", identity, bundle});
  if (end.exitStatus != 0)
    throw std::runtime_error("cannot sign " + bundle.string() + ": " + end.error);
}

void TestMachine::wrapTool(const std::string& name, const std::string& script) const {
  fs::rename(tool(name), tool(name + ".real"));
  std::ofstream(tool(name)) << "#!/bin/sh\n" << script;
  fs::permissions(tool(name), fs::perms::owner_all | fs::perms::group_exec | fs::perms::group_read |
                                  fs::perms::others_exec | fs::perms::others_read);
}

Finished TestMachine::run(const fs::path& program, std::vector<std::string> arguments) const {
  return runToEnd({program, std::move(arguments), variables_});
}

RunningCopy TestMachine::start(const fs::path& bundle) {
  const fs::path executable = bundle / "Contents/MacOS/Driftmark";
  icloud::Launch launch{executable, {}, variables_};
  if (user_) {
    const std::string user = std::to_string(*user_);
    launch.program = "/usr/bin/setpriv";
    launch.arguments = {"--reuid",     user,   "--regid", user,      "--clear-groups",
                        "--pdeathsig", "KILL", "--",      executable};
  }
  Channel log = Channel::pipe();
  launch.error = log.childEnd();
  icloud::ChildProcess process(launch);
  log.closeChildEnd();
  return {std::move(process), std::move(log), driverListener_->awaitProgram()};
}

fs::path TestMachine::logOfOpened(const fs::path& bundle) const {
  return root() / "var/log" / bundle.stem().concat(".log");
}

int TestMachine::awaitEndOf(pid_t openedCopy) {
  const icloud::Descriptor exit = icloud::openProcess(openedCopy);
  awaitReadable(exit.get(), "the end of an opened copy");
  int status = 0;
  if (waitpid(openedCopy, &status, 0) != openedCopy)
    icloud::throwSystemFailure("the copy is not a child of the test");
  return status;
}

std::vector<std::string> TestMachine::awaitEndOfEverything() {
  return Orphans::endAll({}, maxWait);
}

void TestMachine::killEverything() {
  Orphans::endAll();
}

} // namespace driftmark::test
