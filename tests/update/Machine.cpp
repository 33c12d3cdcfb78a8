#include "update/Machine.h"

#include "common/SystemFailure.h"
#include "harness/BuiltFiles.h"
#include "harness/TemporaryFolder.h"
#include "process/ChildProcess.h"
#include "process/Pipe.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include <sys/wait.h>
#include <unistd.h>

namespace driftmark::test {
namespace fs = std::filesystem;

namespace {

constexpr uid_t nobody = 65534;
constexpr std::chrono::seconds patience{30};

fs::path newFolder() {
  std::string pattern = fs::canonical(fs::temp_directory_path()) / "road-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr)
    icloud::throwSystemFailure("cannot make " + pattern);
  return pattern;
}

/// The tools are never written to, so links will do where they can be had.
void layOutTools(const fs::path& root) {
  std::error_code acrossVolumes;
  fs::copy(simulatedTools(), root,
           fs::copy_options::recursive | fs::copy_options::create_hard_links, acrossVolumes);
  if (!acrossVolumes)
    return;
  fs::remove_all(root);
  fs::copy(simulatedTools(), root, fs::copy_options::recursive);
}

void setVersion(const fs::path& bundle, const std::string& version) {
  const fs::path file = bundle / "Contents/Info.plist";
  std::string text = contentsOf(file);
  const auto key = text.find("<key>CFBundleShortVersionString</key>");
  const auto begin = text.find("<string>", key) + std::string("<string>").size();
  const auto end = text.find("</string>", begin);
  if (key == std::string::npos || end == std::string::npos)
    throw std::runtime_error("the application names no version");
  std::ofstream(file, std::ios::binary) << text.replace(begin, end - begin, version);
}

void removeWithAllRights(const fs::path& folder) {
  std::error_code ignored;
  for (auto entry = fs::recursive_directory_iterator(folder, ignored);
       entry != fs::recursive_directory_iterator(); entry.increment(ignored))
    if (entry->is_directory(ignored) && !entry->is_symlink(ignored))
      fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
  fs::remove_all(folder, ignored);
}

} // namespace

Machine::Machine() : folder_(newFolder()), temporaryFiles_(folder_ / "tmp") {
  icloud::adoptOrphans();
  for (const char* name : {"home", "tmp", "run"})
    fs::create_directory(folder_ / name);
  fs::permissions(folder_ / "run", fs::perms::owner_all);
  layOutTools(root());
  fs::create_directories(applications());
  fs::create_directories(root() / "var/log");
  driverListener_.emplace(folder_);
  variables_ = driverListener_->environment();
  setVariable("QT_QPA_PLATFORM", "offscreen");
  setVariable("DRIFTMARK_SYSTEM_ROOT", root());
  setVariable("HOME", home());
  setVariable("TMPDIR", temporaryFiles_);
  setVariable("XDG_RUNTIME_DIR", folder_ / "run");
  for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME",
                           "DBUS_SESSION_BUS_ADDRESS", "DISPLAY", "WAYLAND_DISPLAY"})
    variables_[name] = std::nullopt;
}

Machine::~Machine() {
  killEverything();
  removeWithAllRights(folder_);
  removeWithAllRights(temporaryFiles_);
}

fs::path Machine::programsTemporaryFolder() const {
  return temporaryFiles_ / ("driftmark-" + std::to_string(user_.value_or(getuid())));
}

fs::path Machine::workFolder(pid_t program) const {
  return programsTemporaryFolder() / ("Driftmark-update-" + std::to_string(program));
}

void Machine::moveTemporaryFiles(const fs::path& folder) {
  temporaryFiles_ = folder;
  setVariable("TMPDIR", folder);
}

void Machine::useUnprivilegedUser() {
  if (getuid() != 0)
    return;
  user_ = nobody;
  fs::permissions(folder_, fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec);
  if (chown(driverListener_->socket().c_str(), nobody, nobody) != 0)
    icloud::throwSystemFailure("cannot give the seat away");
  for (const char* name : {"home", "tmp", "run", "root/Applications", "root/var"})
    giveToUser(folder_ / name);
  // Where this was built, that user may not be let in.
  const fs::path plugins = folder_ / "plugins";
  fs::copy(*variables_.at("QT_PLUGIN_PATH"), plugins, fs::copy_options::recursive);
  setVariable("QT_PLUGIN_PATH", plugins);
}

void Machine::giveToUser(const fs::path& path) const {
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

void Machine::setVariable(const std::string& name, const std::string& value) {
  variables_[name] = value;
}

void Machine::writeSettings(const std::string& document) const {
  const fs::path folder = home() / ".config/driftmark";
  fs::create_directories(folder);
  std::ofstream(folder / "settings.json", std::ios::binary) << document;
  giveToUser(home() / ".config");
}

std::string Machine::settings() const {
  return contentsOf(home() / ".config/driftmark/settings.json");
}

fs::path Machine::placeBundle(const fs::path& folder, const std::string& version,
                              const std::string& name) const {
  fs::create_directories(folder);
  const fs::path bundle = folder / name;
  fs::copy(driftmarkBundle(), bundle,
           fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  setVersion(bundle, version);
  seal(bundle);
  giveToUser(bundle);
  return bundle;
}

void Machine::seal(const fs::path& bundle, const std::string& identity) const {
  const ToolEnd end = run(tool("codesign"), {"-f", "-s", identity, bundle});
  if (end.exitStatus != 0)
    throw std::runtime_error("cannot seal " + bundle.string() + ": " + end.output);
}

void Machine::wrapTool(const std::string& name, const std::string& script) const {
  fs::rename(tool(name), tool(name + ".real"));
  std::ofstream(tool(name)) << "#!/bin/sh\n" << script;
  fs::permissions(tool(name), fs::perms::owner_all | fs::perms::group_exec | fs::perms::group_read |
                                  fs::perms::others_exec | fs::perms::others_read);
}

ToolEnd Machine::run(const fs::path& program, std::vector<std::string> arguments) const {
  Channel output = Channel::pipe();
  icloud::Launch launch{program, std::move(arguments), variables_};
  launch.output = launch.error = output.childEnd();
  icloud::ChildProcess process(launch);
  ToolEnd end;
  end.output = output.readToEnd();
  const int status = process.wait();
  end.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return end;
}

RunningCopy Machine::start(const fs::path& bundle) {
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

fs::path Machine::logOfOpened(const fs::path& bundle) const {
  return root() / "var/log" / bundle.stem().concat(".log");
}

int Machine::awaitEndOf(pid_t openedCopy) {
  const icloud::Descriptor exit = icloud::openProcess(openedCopy);
  if (!icloud::isReadableWithin(exit.get(), patience))
    throw std::runtime_error("the copy does not end");
  int status = 0;
  if (waitpid(openedCopy, &status, 0) != openedCopy)
    icloud::throwSystemFailure("the copy is not ours to wait for");
  return status;
}

std::vector<std::string> Machine::endOfEverything() {
  std::vector<std::string> outlived;
  for (const icloud::Orphan& orphan : icloud::collectOrphans({}, patience))
    if (orphan.wasKilled)
      outlived.push_back(orphan.name);
  return outlived;
}

void Machine::killEverything() {
  icloud::collectOrphans({}, std::chrono::milliseconds(0));
}

} // namespace driftmark::test
