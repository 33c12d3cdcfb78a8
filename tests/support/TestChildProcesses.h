#pragma once

#include "ports/ChildProcesses.h"
#include "ports/MainQueue.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace driftmark::test {

using Arguments = std::vector<std::string>;

/// A spawned child that the test controls. Its output and its exit reach the program through the
/// main queue: output first, waiting output in one chunk, then the exit, once.
class TestChild : public std::enable_shared_from_this<TestChild> {
public:
  TestChild(MainQueue& mainQueue, ToolCommand command, std::int32_t identifier,
            ChildProcesses::DataHandler onData, ChildProcesses::ExitHandler onExit);

  const ToolCommand& command() const { return command_; }
  std::int32_t identifier() const { return identifier_; }

  /// Writes `bytes` to the terminal unchanged. Main thread only.
  void print(std::string_view bytes);

  /// Ends the child. Main thread only; once, and nothing is printed afterwards.
  void exit();

  /// Terminate requests are counted but do not end the child.
  void ignoreTerminate() { ignoresTerminate_ = true; }

  /// Called on the main thread with each terminate request instead of ending the child.
  void onTerminate(std::function<void(TestChild&)> handler) { onTerminate_ = std::move(handler); }

  bool isRunning() const { return running_; }

  /// How often the program asked the child to end while it ran.
  int terminateRequests() const { return terminateRequests_; }

  /// Whether the program still holds the read handle and has not cleared its handler.
  bool isRead() const { return readable_; }

  /// Whether the program still holds the process object.
  bool isHeld() const { return !process_.expired(); }

private:
  friend class TestChildProcesses;
  class Process;
  class Handle;

  TerminalChild open();
  void terminate();
  void stopReading();
  void schedule();
  void deliver();

  MainQueue& mainQueue_;
  ToolCommand command_;
  std::int32_t identifier_;
  ChildProcesses::DataHandler onData_;
  ChildProcesses::ExitHandler onExit_;
  std::function<void(TestChild&)> onTerminate_;
  std::weak_ptr<ChildProcess> process_;
  std::string waiting_;
  std::atomic<bool> running_ = true;
  std::atomic<bool> ignoresTerminate_ = false;
  std::atomic<int> terminateRequests_ = 0;
  std::atomic<bool> readable_ = true;
  bool scheduled_ = false;
  bool exitReported_ = false;
};

/// The test's view of a prepared run. Any thread.
class TestRun {
public:
  TestRun(ToolCommand command, ToolOutput output) : command_(std::move(command)), output_(output) {}

  const ToolCommand& command() const { return command_; }
  ToolOutput output() const { return output_; }

  bool isRunning() const { return running_; }
  bool wasLaunched() const { return identifier_ != 0; }

  /// How often the program asked the tool to end while it ran.
  int terminateRequests() const { return terminateRequests_; }

  /// Whether the program still holds the run.
  bool isHeld() const { return !object_.expired(); }

private:
  friend class TestChildProcesses;

  ToolCommand command_;
  ToolOutput output_;
  std::atomic<std::int32_t> identifier_ = 0;
  std::atomic<bool> running_ = false;
  std::atomic<int> terminateRequests_ = 0;
  std::weak_ptr<ToolRun> object_;
};

/// Child processes that the test controls.
class TestChildProcesses final : public ChildProcesses {
public:
  /// A signal's number as an exit status.
  static constexpr int terminated = 15;

  explicit TestChildProcesses(MainQueue& mainQueue);
  TestChildProcesses(const TestChildProcesses&) = delete;
  TestChildProcesses& operator=(const TestChildProcesses&) = delete;
  ~TestChildProcesses() override;

  std::variant<TerminalChild, LaunchError> spawn(const ToolCommand& command, DataHandler onData,
                                                 ExitHandler onExit) override;
  std::shared_ptr<ToolRun> prepare(const ToolCommand& command, ToolOutput output) override;
  std::optional<LaunchError> launchDetached(const ToolCommand& command) override;

  /// Called with each spawned child before `spawn` returns.
  void onSpawn(std::function<void(TestChild&)> handler) { onSpawn_ = std::move(handler); }

  /// Called with the command of each run when it is launched, on its thread.
  void onRun(std::function<void(const ToolCommand&)> handler) { onRun_ = std::move(handler); }

  /// Sets the result of runs with these arguments. Without one they print nothing and exit with 0.
  void script(const Arguments& arguments, ToolResult result);
  void script(const Arguments& arguments, std::string output);

  /// Runs with these arguments hang until `release`, `releaseAll` or a terminate request; when
  /// the request ends them, their output is `printed`.
  void hang(const Arguments& arguments, std::string printed = {});
  void release(const Arguments& arguments);
  void releaseAll();

  /// Children and runs with these arguments, or all of them, fail to start from now on.
  void failLaunches(const Arguments& arguments, LaunchError error);
  void failAllLaunches(LaunchError error);

  /// The same for every `spawn`, for every run, or for every detached tool.
  void failSpawns(LaunchError error);
  void failRuns(LaunchError error);
  void failDetached(LaunchError error);

  /// Runs exit with this status and without output from now on, whatever their script.
  void exitRuns(int status);

  /// Removes all failures to start.
  void allowLaunches();

  /// The spawned children, oldest first: all, or those with these arguments.
  std::vector<std::shared_ptr<TestChild>> children() const;
  std::vector<std::shared_ptr<TestChild>> children(const Arguments& arguments) const;

  /// The child with these arguments that was spawned last. There must be one.
  TestChild& child(const Arguments& arguments) const;

  /// The commands of all attempts to spawn, failed ones included.
  std::vector<ToolCommand> spawnAttempts() const;

  /// The commands that were launched detached, oldest first, without failed attempts.
  std::vector<ToolCommand> detached() const;

  /// The prepared runs, oldest first: all, or those with these arguments.
  std::vector<std::shared_ptr<TestRun>> runs() const;
  std::vector<std::shared_ptr<TestRun>> runs(const Arguments& arguments) const;

  /// The arguments of the running tools that the program asked to end, in that order.
  std::vector<Arguments> terminatedRuns() const;

  /// Waits until a run with these arguments hangs; false when ten seconds pass without one.
  bool awaitHanging(const Arguments& arguments) const;

private:
  class Run;

  struct Script {
    ToolResult result;
    bool hangs = false;
    std::string printedWhenTerminated;
  };

  std::optional<LaunchError> failure(const Arguments& arguments,
                                     const std::optional<LaunchError>& ofOperation) const;
  std::variant<ToolResult, LaunchError> run(TestRun& run);
  void terminate(TestRun& run);

  MainQueue& mainQueue_;
  std::function<void(TestChild&)> onSpawn_;
  std::function<void(const ToolCommand&)> onRun_;
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::int32_t lastIdentifier_ = 500;
  std::vector<ToolCommand> spawnAttempts_;
  std::vector<ToolCommand> detached_;
  std::vector<std::shared_ptr<TestChild>> children_;
  std::vector<std::shared_ptr<TestRun>> runs_;
  std::vector<Arguments> terminatedRuns_;
  std::map<Arguments, Script> scripts_;
  std::map<Arguments, LaunchError> failures_;
  std::optional<LaunchError> generalFailure_;
  std::optional<LaunchError> spawnFailure_;
  std::optional<LaunchError> runFailure_;
  std::optional<LaunchError> detachedFailure_;
  std::optional<int> runStatus_;
};

} // namespace driftmark::test
