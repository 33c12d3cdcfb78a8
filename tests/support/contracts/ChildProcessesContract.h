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
/// The helper tool takes steps as its arguments and carries them out in order, each output written
/// at once and completely; after the last step it ends with exit code 0.
///
///   print TEXT                   writes TEXT to standard output
///   print-error TEXT             writes TEXT to standard error
///   print-bytes HEX              writes the bytes that HEX names, two digits each
///   print-many COUNT TEXT        writes TEXT COUNT times to standard output
///   print-input-size             reads standard input to its end, writes how many bytes came
///   print-when-terminated TEXT   waits for SIGTERM, writes TEXT, goes on with the next step;
///                                a SIGTERM that comes before this step is not lost
///   wait                         waits until a signal ends it
///   exit STATUS                  ends with this exit code
///   raise SIGNAL                 ends by this signal, given as a number
class ChildProcessesSubject {
public:
  virtual ~ChildProcessesSubject() = default;

  virtual ChildProcesses& childProcesses() = 0;

  /// Runs the main queue until `done`; false when a generous deadline passes first.
  virtual bool runUntil(const std::function<bool()>& done) = 0;

  /// Runs `task` on the main queue after everything handed over so far.
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

  /// A spawned child and what came from it.
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

  /// Lets everything run that is on its way to the main queue.
  void drain();

  std::unique_ptr<ChildProcessesSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
