#pragma once

#include "harness/Channel.h"
#include "harness/RunToEnd.h"
#include "harness/TemporaryFolder.h"
#include "process/ChildProcess.h"
#include "uidriver/DriverListener.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace driftmark::test {

/// A running copy of the program, its standard error and its UI driver.
struct RunningCopy {
  icloud::ChildProcess process;
  Channel log;
  icloud::UiDriver driver;
};

/// A machine in a temporary folder: the simulated system with its tools, the home of a user, a
/// folder for temporary files, and a listener for UI drivers. Every process that was started on it
/// ends with this object, and its folders are removed.
class TestMachine {
public:
  TestMachine();
  ~TestMachine();
  TestMachine(const TestMachine&) = delete;
  TestMachine& operator=(const TestMachine&) = delete;

  const std::filesystem::path& folder() const { return folder_.path(); }
  std::filesystem::path root() const { return folder() / "root"; }
  std::filesystem::path home() const { return folder() / "home"; }
  std::filesystem::path applications() const { return root() / "Applications"; }
  std::filesystem::path tool(const std::string& name) const { return root() / "usr/bin" / name; }
  std::filesystem::path trash() const { return home() / ".local/share/Trash/files"; }

  /// The folder that the program makes for its temporary files.
  std::filesystem::path programsTemporaryFolder() const;

  /// The folder in which a running copy unpacks an update.
  std::filesystem::path workFolder(pid_t program) const;

  /// Uses `folder` for temporary files from now on. It has to outlive this object.
  void moveTemporaryFiles(const std::filesystem::path& folder);

  /// From now on programs run as a user without root's rights, who owns the machine's folders. Does
  /// nothing unless the tests run as root.
  void useUnprivilegedUser();
  void giveToUser(const std::filesystem::path& path) const;

  /// Sets a variable for every program that is started later.
  void setVariable(const std::string& name, const std::string& value);

  /// The program's settings, as a JSON document.
  void writeSettings(const std::string& document) const;
  std::string settings() const;

  /// Puts a signed copy of the application into `folder`. Returns its path.
  std::filesystem::path placeBundle(const std::filesystem::path& folder, const std::string& version,
                                    const std::string& name = "Driftmark.app") const;

  /// Replaces a text of a bundle's property list.
  static void setInformation(const std::filesystem::path& bundle, const std::string& key,
                             const std::string& value);

  /// Puts the executable, without a bundle around it, into "Contents/MacOS" of `folder`: `start`
  /// runs it there.
  void placeExecutable(const std::filesystem::path& folder) const;

  /// Signs a bundle again after a change.
  void
  sign(const std::filesystem::path& bundle,
       const std::string& identity = "Developer ID Application: Tallowmere (T4N8RW2KQZ)") const;

  /// Replaces a tool by a shell script. The tool itself is `NAME.real` from now on.
  void wrapTool(const std::string& name, const std::string& script) const;

  /// Runs a tool to its end.
  Finished run(const std::filesystem::path& program, std::vector<std::string> arguments) const;

  /// Starts the program of a bundle and waits for its UI driver.
  RunningCopy start(const std::filesystem::path& bundle);

  /// Waits for the UI driver of a copy that another program opens.
  icloud::UiDriver awaitOpenedCopy() { return driverListener_->awaitProgram(); }
  std::optional<icloud::UiDriver> copyOpenedWithin(std::chrono::milliseconds timeout) {
    return driverListener_->programWithin(timeout);
  }

  /// The log of copies that were opened from a bundle.
  std::filesystem::path logOfOpened(const std::filesystem::path& bundle) const;

  /// Waits for the end of a copy that another program opened; the status as `waitpid` gives it.
  static int awaitEndOf(pid_t openedCopy);

  /// Waits until every process that was started has ended. Kills what is left after `maxWait` and
  /// returns the names.
  static std::vector<std::string> awaitEndOfEverything();

  /// Kills every process that was started and still runs.
  static void killEverything();

private:
  TemporaryFolder folder_;
  std::filesystem::path temporaryFiles_;
  std::optional<uid_t> user_;
  std::map<std::string, std::optional<std::string>> variables_;
  std::optional<icloud::DriverListener> driverListener_;
};

} // namespace driftmark::test
