#pragma once

#include "harness/Channel.h"
#include "process/ChildProcess.h"
#include "uidriver/DriverListener.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace driftmark::test {

/// What a copy of the program writes, and the user who sits before it.
struct RunningCopy {
  icloud::ChildProcess process;
  Channel log;
  icloud::UiDriver driver;
};

/// What a tool that ran to its end left behind.
struct ToolEnd {
  int exitStatus = -1; ///< -1 when a signal ended it
  std::string output;  ///< with standard error
};

/// A computer of its own in a temporary folder: the simulated system with its tools, the home of a
/// user, a folder for temporary files, and a seat before the screen. Everything that was started on
/// it, by whomever, ends with this object, and its folders go. Throws std::runtime_error when it
/// cannot be laid out.
class Machine {
public:
  Machine();
  ~Machine();
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  const std::filesystem::path& folder() const { return folder_; }
  std::filesystem::path root() const { return folder_ / "root"; }
  std::filesystem::path home() const { return folder_ / "home"; }
  std::filesystem::path applications() const { return root() / "Applications"; }
  std::filesystem::path tool(const std::string& name) const { return root() / "usr/bin" / name; }
  std::filesystem::path trash() const { return home() / ".local/share/Trash/files"; }

  /// The folder of temporary files that the program makes for itself.
  std::filesystem::path programsTemporaryFolder() const;

  /// The folder in which a copy of the program unpacks an update.
  std::filesystem::path workFolder(pid_t program) const;

  /// Keeps temporary files below `folder`, which goes with this object.
  void moveTemporaryFiles(const std::filesystem::path& folder);

  /// From now on the programs belong to a user for whom file modes count, and so does what lies on
  /// the machine. Changes nothing unless the tests run with all rights.
  void useUnprivilegedUser();
  void giveToUser(const std::filesystem::path& path) const;

  /// A variable that every program gets.
  void setVariable(const std::string& name, const std::string& value);

  /// What the user's settings say, as a JSON document.
  void writeSettings(const std::string& document) const;
  std::string settings() const;

  /// Puts a sealed copy of the application into `folder`. Returns its path.
  std::filesystem::path placeBundle(const std::filesystem::path& folder, const std::string& version,
                                    const std::string& name = "Driftmark.app") const;

  /// Seals a bundle again, after a change.
  void
  seal(const std::filesystem::path& bundle,
       const std::string& identity = "Developer ID Application: Tallowmere (T4N8RW2KQZ)") const;

  /// Puts a shell script in a tool's place. The tool itself is `NAME.real` from now on.
  void wrapTool(const std::string& name, const std::string& script) const;

  ToolEnd run(const std::filesystem::path& program, std::vector<std::string> arguments) const;

  /// Starts the program of a bundle with a user before it.
  RunningCopy start(const std::filesystem::path& bundle);

  /// Waits for a copy that somebody else opens.
  icloud::UiDriver awaitOpenedCopy() { return driverListener_->awaitProgram(); }
  std::optional<icloud::UiDriver> copyOpenedWithin(std::chrono::milliseconds limit) {
    return driverListener_->programWithin(limit);
  }

  /// What copies wrote that were opened from a bundle.
  std::filesystem::path logOfOpened(const std::filesystem::path& bundle) const;

  /// Waits for the end of a copy that was opened; the status as `waitpid` gives it.
  static int awaitEndOf(pid_t openedCopy);

  /// Waits until everything that was started has ended; the names of what has not by then.
  static std::vector<std::string> endOfEverything();

  /// Kills everything that was started and still runs.
  static void killEverything();

private:
  std::filesystem::path folder_;
  std::filesystem::path temporaryFiles_;
  std::optional<uid_t> user_;
  std::map<std::string, std::optional<std::string>> variables_;
  std::optional<icloud::DriverListener> driverListener_;
};

} // namespace driftmark::test
