#pragma once

#include "ports/ChildProcesses.h"
#include "support/contracts/SubjectFactory.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {

/// Child processes under test, on the main thread, with a helper tool.
///
/// The arguments of the helper tool are steps, which it executes in order. It writes each output at
/// once and completely. After the last step it ends with exit code 0.
///
///   print TEXT                   writes TEXT to standard output
///   print-error TEXT             writes TEXT to standard error
///   print-bytes HEX              writes the bytes that HEX names, two digits each
///   print-many COUNT TEXT        writes TEXT COUNT times to standard output
///   print-input-size             reads standard input to its end, writes the number of bytes
///   print-when-terminated TEXT   waits for SIGTERM, writes TEXT, continues with the next step;
///                                a SIGTERM that arrives before this step is not lost
///   wait                         waits until a signal ends it
///   exit STATUS                  ends with this exit code
///   raise SIGNAL                 ends by this signal, given as a number
class ChildProcessesSubject {
public:
  virtual ~ChildProcessesSubject() = default;

  virtual ChildProcesses& childProcesses() = 0;

  /// Runs the main queue until `done`; false after a long timeout.
  virtual bool runUntil(const std::function<bool()>& done) = 0;

  /// Runs `task` on the main queue after all tasks added so far.
  virtual void async(std::function<void()> task) = 0;

  /// The helper tool with these steps.
  virtual ToolCommand tool(const std::vector<std::string>& steps) = 0;

  /// A tool that does not exist.
  virtual ToolCommand missingTool() = 0;

  /// A file that exists and may not be executed.
  virtual ToolCommand forbiddenTool() = 0;
};

class ChildProcessesContract
    : public testing::TestWithParam<SubjectFactory<ChildProcessesSubject>> {
protected:
  using Steps = std::vector<std::string>;

  /// A spawned child and its output.
  struct Spawned {
    TerminalChild child;
    std::string output; ///< without the carriage returns that the terminal adds
    std::vector<std::size_t> chunks;
    int exits = 0;
    std::string outputAtExit;
    bool runningAtExit = true;
    bool calledElsewhere = false;
  };

  ChildProcesses& childProcesses() { return subject_->childProcesses(); }
  bool runUntil(const std::function<bool()>& done) { return subject_->runUntil(done); }

  /// Spawns the helper tool; null when that failed, which fails the test too.
  std::shared_ptr<Spawned> spawn(const Steps& steps);

  /// Prepares a run of the helper tool.
  std::shared_ptr<ToolRun> prepare(const Steps& steps, ToolOutput output = ToolOutput::capture);

  /// Runs the helper tool to its end; a failed launch fails the test.
  ToolResult run(const Steps& steps, ToolOutput output = ToolOutput::capture);

  /// Runs all tasks that are added to the main queue until now.
  void drain();

  std::unique_ptr<ChildProcessesSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
