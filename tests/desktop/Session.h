#pragma once

#include "desktop/Display.h"
#include "desktop/SessionBus.h"
#include "harness/BuiltFiles.h"
#include "harness/Channel.h"
#include "harness/TemporaryFolder.h"
#include "process/ChildProcess.h"
#include "uidriver/DriverListener.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace driftmark::test {

/// A program that runs, and what it writes on standard error.
struct Program {
  icloud::ChildProcess process;
  Channel log;
};

/// A user's session of its own in a temporary folder: a home, a system root, a seat before the
/// screen; a display and a bus where they are opened, otherwise there are none. Everything that was
/// started in it ends with this object.
class Session {
public:
  Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session();

  const std::filesystem::path& folder() const { return folder_.path(); }
  std::filesystem::path home() const { return folder() / "home"; }
  std::filesystem::path root() const { return folder() / "root"; }

  Display& openDisplay();
  SessionBus& openBus();

  void setVariable(const std::string& name, const std::string& value) { variables_[name] = value; }

  /// Gives the system the tools of the simulated one.
  void installTools() const;

  /// Puts a shell script in the place of a tool, as in "/usr/bin/brctl".
  void writeTool(const std::string& path, const std::string& script) const;

  /// Makes the home another user's. Only for somebody with all rights.
  void giveTo(uid_t user) const;

  /// Starts a program, as the user of that number where one is given.
  Program start(const std::filesystem::path& executable = driftmarkProgram(),
                std::vector<std::string> arguments = {}, std::optional<uid_t> user = std::nullopt);

  /// Waits for the user before the next program.
  icloud::UiDriver attend() { return driverListener_.awaitProgram(); }

  /// Runs a tool of this machine to its end, which has to be a success.
  void run(const std::filesystem::path& tool, std::vector<std::string> arguments) const;

  /// The names of the processes that still run below the test, but for the display, the bus and
  /// `others`. They are killed.
  std::vector<std::string> leftRunning(std::vector<pid_t> others = {}) const;

private:
  TemporaryFolder folder_;
  icloud::DriverListener driverListener_;
  SessionBus::Variables variables_;
  std::optional<Display> display_;
  std::optional<SessionBus> bus_;
};

/// The user that stands for anybody else.
constexpr uid_t somebodyElse = 65534;

} // namespace driftmark::test
