#pragma once

#include "desktop/Display.h"
#include "desktop/SessionBus.h"
#include "harness/BuiltFiles.h"
#include "harness/RunningProgram.h"
#include "harness/TemporaryFolder.h"
#include "process/ChildProcess.h"
#include "uidriver/DriverListener.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace driftmark::test {

/// A user's session in a temporary folder: a home, a system root, a listener for UI drivers, and a
/// display and a bus once they are opened. Everything that was started in it ends with this object.
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

  /// Copies the simulated tools into the system root.
  void installTools() const;

  /// Replaces a tool, such as "/usr/bin/brctl", by a shell script.
  void writeTool(const std::string& path, const std::string& script) const;

  /// Makes `user` the owner of the session's folders. Only root can do that.
  void giveTo(uid_t user) const;

  /// Starts a program, as another user where one is given.
  RunningProgram start(const std::filesystem::path& executable = driftmarkProgram(),
                       std::vector<std::string> arguments = {},
                       std::optional<uid_t> user = std::nullopt);

  /// Waits for the UI driver of the next program.
  icloud::UiDriver awaitDriver() { return driverListener_.awaitProgram(); }

  /// Runs a tool to its end. Throws std::runtime_error when it fails.
  void run(const std::filesystem::path& tool, std::vector<std::string> arguments) const;

  /// Kills the processes that still run below the test, except the display, the bus and `others`.
  /// Returns their names.
  std::vector<std::string> killLeftovers(std::vector<pid_t> others = {}) const;

private:
  TemporaryFolder folder_;
  icloud::DriverListener driverListener_;
  SessionBus::Variables variables_;
  std::optional<Display> display_;
  std::optional<SessionBus> bus_;
};

/// A user other than the one who runs the tests.
constexpr uid_t otherUser = 65534;

} // namespace driftmark::test
