#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace driftmark {

/// A tool named by its absolute path, and its arguments without the program name.
struct ToolCommand {
  std::string executable;
  std::vector<std::string> arguments;
};

/// Why a child did not start.
struct LaunchError {
  enum class Stage {
    allocateTerminal, ///< the system gave no pseudo-terminal
    openTerminal,     ///< its other end could not be opened
    launch,           ///< the tool itself could not be started
  };
  Stage stage = Stage::launch;
  std::string description; ///< for the user, in the system's words
};

/// A child process. Releasing the object does not end the child. Any thread.
class ChildProcess {
public:
  virtual ~ChildProcess() = default;

  /// The system's process identifier; 0 as long as the child was not launched.
  virtual std::int32_t identifier() const = 0;

  /// Whether the child was launched and has not ended.
  virtual bool isRunning() const = 0;

  /// Asks the child to end (SIGTERM). Does nothing when it is not running.
  virtual void terminate() = 0;
};

/// The reading end of a child's terminal. Closed when released. Main thread only.
class ReadHandle {
public:
  virtual ~ReadHandle() = default;

  /// Stops the delivery of output.
  virtual void clearReadabilityHandler() = 0;
};

/// A running child whose output goes to a pseudo-terminal.
struct TerminalChild {
  std::shared_ptr<ChildProcess> process;
  std::unique_ptr<ReadHandle> masterHandle;
};

/// The outcome of a tool that ran to its end.
struct ToolResult {
  std::string output; ///< all that was captured
  int exitStatus = 0; ///< the exit code, or the number of the signal that ended it
};

/// A tool that is run to its end by one blocking call.
class ToolRun : public ChildProcess {
public:
  /// Launches the tool, reads its output to the end, then waits for its exit. Call it once; blocks.
  virtual std::variant<ToolResult, LaunchError> run() = 0;
};

/// Where the output of a `ToolRun` goes.
enum class ToolOutput {
  capture,      ///< standard output is captured, standard error discarded
  captureError, ///< standard error is captured, standard output is shared with this process
  discard,      ///< both are discarded
};

/// Starts the system's command-line tools. Every child gets the environment and working directory
/// of this process, the null device as standard input, default signal handling, and no descriptor
/// beyond its three standard ones.
class ChildProcesses {
public:
  using DataHandler = std::function<void(std::string_view bytes)>;
  using ExitHandler = std::function<void()>;

  /// No call of a `DataHandler` gets more bytes than this.
  static constexpr std::size_t maxChunkSize = 65536;

  virtual ~ChildProcesses() = default;

  /// Starts `command` with standard output and standard error on a new pseudo-terminal in its
  /// default mode, so that the child writes to a terminal. Main thread only; returns once the tool
  /// runs or has failed to start.
  ///
  /// `onData` gets the output in the order in which it was written; output that waits is joined
  /// into one chunk. `onExit` is called once, after the child has ended and all output that it
  /// wrote before was delivered. Both are called on the main thread, from its queue. The terminal
  /// blocks a child that writes faster than this program reads: no output is lost, and only a
  /// bounded amount waits here.
  virtual std::variant<TerminalChild, LaunchError>
  spawn(const ToolCommand& command, DataHandler onData, ExitHandler onExit) = 0;

  /// Makes a run of `command` without launching it. Any thread.
  virtual std::shared_ptr<ToolRun> prepare(const ToolCommand& command, ToolOutput output) = 0;

  /// Starts `command` in a session of its own, with its output discarded, and releases it: it
  /// continues when this process ends. Returns no value on success. Main thread only.
  [[nodiscard]] virtual std::optional<LaunchError> launchDetached(const ToolCommand& command) = 0;
};

} // namespace driftmark
