#include "support/TestChildProcesses.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <utility>

#include <gtest/gtest.h>

namespace driftmark::test {

namespace {

std::string joined(const Arguments& arguments) {
  std::string text;
  for (const std::string& argument : arguments)
    text += (text.empty() ? "" : " ") + argument;
  return text;
}

} // namespace

class TestChild::Process final : public ChildProcess {
public:
  explicit Process(std::shared_ptr<TestChild> child) : child_(std::move(child)) {}

  std::int32_t identifier() const override { return child_->identifier(); }
  bool isRunning() const override { return child_->isRunning(); }
  void terminate() override { child_->terminate(); }

private:
  std::shared_ptr<TestChild> child_;
};

class TestChild::Handle final : public ReadHandle {
public:
  explicit Handle(std::shared_ptr<TestChild> child) : child_(std::move(child)) {}
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() override { child_->stopReading(); }

  void clearReadabilityHandler() override { child_->stopReading(); }

private:
  std::shared_ptr<TestChild> child_;
};

TestChild::TestChild(MainQueue& mainQueue, ToolCommand command, std::int32_t identifier,
                     ChildProcesses::DataHandler onData, ChildProcesses::ExitHandler onExit)
    : mainQueue_(mainQueue), command_(std::move(command)), identifier_(identifier),
      onData_(std::move(onData)), onExit_(std::move(onExit)) {}

TerminalChild TestChild::open() {
  auto process = std::make_shared<Process>(shared_from_this());
  process_ = process;
  return {.process = std::move(process),
          .masterHandle = std::make_unique<Handle>(shared_from_this())};
}

void TestChild::print(std::string_view bytes) {
  if (!running_)
    throw std::logic_error("a child that has ended prints");
  if (!readable_ || bytes.empty())
    return;
  waiting_ += bytes;
  schedule();
}

void TestChild::exit() {
  if (!running_.exchange(false))
    throw std::logic_error("a child ends twice");
  schedule();
}

void TestChild::terminate() {
  if (!running_)
    return;
  ++terminateRequests_;
  if (ignoresTerminate_)
    return;
  mainQueue_.async([self = shared_from_this()] {
    if (!self->running_)
      return;
    if (self->onTerminate_)
      self->onTerminate_(*self);
    else
      self->exit();
  });
}

void TestChild::stopReading() {
  readable_ = false;
  waiting_.clear();
}

void TestChild::schedule() {
  if (std::exchange(scheduled_, true))
    return;
  mainQueue_.async([self = shared_from_this()] {
    self->scheduled_ = false;
    self->deliver();
  });
}

void TestChild::deliver() {
  if (!waiting_.empty()) {
    const std::string chunk = waiting_.substr(0, ChildProcesses::maxChunkSize);
    waiting_.erase(0, chunk.size());
    if (!waiting_.empty() || !running_)
      schedule();
    onData_(chunk);
  } else if (!running_ && !std::exchange(exitReported_, true)) {
    onData_ = nullptr;
    std::exchange(onExit_, nullptr)();
  }
}

class TestChildProcesses::Run final : public ToolRun {
public:
  Run(TestChildProcesses& owner, std::shared_ptr<TestRun> state)
      : owner_(owner), state_(std::move(state)) {}

  std::int32_t identifier() const override { return state_->identifier_; }
  bool isRunning() const override { return state_->running_; }
  void terminate() override { owner_.terminate(*state_); }
  std::variant<ToolResult, LaunchError> run() override { return owner_.run(*state_); }

private:
  TestChildProcesses& owner_;
  std::shared_ptr<TestRun> state_;
};

TestChildProcesses::TestChildProcesses(MainQueue& mainQueue) : mainQueue_(mainQueue) {}

TestChildProcesses::~TestChildProcesses() {
  // A child that is still held elsewhere stays alive, but its handlers are released here.
  for (const auto& child : children_) {
    child->onData_ = nullptr;
    child->onExit_ = nullptr;
  }
}

std::variant<TerminalChild, LaunchError>
TestChildProcesses::spawn(const ToolCommand& command, DataHandler onData, ExitHandler onExit) {
  std::shared_ptr<TestChild> child;
  {
    const std::lock_guard lock(mutex_);
    spawnAttempts_.push_back(command);
    if (auto error = failure(command.arguments, spawnFailure_))
      return *std::move(error);
    child = std::make_shared<TestChild>(mainQueue_, command, ++lastIdentifier_, std::move(onData),
                                        std::move(onExit));
    children_.push_back(child);
  }
  TerminalChild result = child->open();
  if (onSpawn_)
    onSpawn_(*child);
  return result;
}

std::shared_ptr<ToolRun> TestChildProcesses::prepare(const ToolCommand& command,
                                                     ToolOutput output) {
  auto state = std::make_shared<TestRun>(command, output);
  auto object = std::make_shared<Run>(*this, state);
  state->object_ = object;
  const std::lock_guard lock(mutex_);
  runs_.push_back(std::move(state));
  return object;
}

std::optional<LaunchError> TestChildProcesses::launchDetached(const ToolCommand& command) {
  const std::lock_guard lock(mutex_);
  if (auto error = failure(command.arguments, detachedFailure_))
    return error;
  detached_.push_back(command);
  return std::nullopt;
}

void TestChildProcesses::script(const Arguments& arguments, ToolResult result) {
  const std::lock_guard lock(mutex_);
  scripts_.erase(arguments); // with its memory
  scripts_[arguments] = {.result = std::move(result), .hangs = false, .printedWhenTerminated = {}};
}

void TestChildProcesses::script(const Arguments& arguments, std::string output) {
  script(arguments, ToolResult{.output = std::move(output), .exitStatus = 0});
}

void TestChildProcesses::hang(const Arguments& arguments, std::string printed) {
  const std::lock_guard lock(mutex_);
  scripts_[arguments].hangs = true;
  scripts_[arguments].printedWhenTerminated = std::move(printed);
}

void TestChildProcesses::release(const Arguments& arguments) {
  const std::lock_guard lock(mutex_);
  scripts_[arguments].hangs = false;
  changed_.notify_all();
}

void TestChildProcesses::releaseAll() {
  const std::lock_guard lock(mutex_);
  for (auto& [arguments, script] : scripts_)
    script.hangs = false;
  changed_.notify_all();
}

void TestChildProcesses::failLaunches(const Arguments& arguments, LaunchError error) {
  const std::lock_guard lock(mutex_);
  failures_[arguments] = std::move(error);
}

void TestChildProcesses::failAllLaunches(LaunchError error) {
  const std::lock_guard lock(mutex_);
  generalFailure_ = std::move(error);
}

void TestChildProcesses::allowLaunches() {
  const std::lock_guard lock(mutex_);
  failures_.clear();
  for (auto* const each : {&generalFailure_, &spawnFailure_, &runFailure_, &detachedFailure_})
    each->reset();
}

void TestChildProcesses::failSpawns(LaunchError error) {
  const std::lock_guard lock(mutex_);
  spawnFailure_ = std::move(error);
}

void TestChildProcesses::failRuns(LaunchError error) {
  const std::lock_guard lock(mutex_);
  runFailure_ = std::move(error);
}

void TestChildProcesses::failDetached(LaunchError error) {
  const std::lock_guard lock(mutex_);
  detachedFailure_ = std::move(error);
}

void TestChildProcesses::exitRuns(int status) {
  const std::lock_guard lock(mutex_);
  runStatus_ = status;
}

std::optional<LaunchError>
TestChildProcesses::failure(const Arguments& arguments,
                            const std::optional<LaunchError>& ofOperation) const {
  if (const auto found = failures_.find(arguments); found != failures_.end())
    return found->second;
  return ofOperation ? ofOperation : generalFailure_;
}

std::variant<ToolResult, LaunchError> TestChildProcesses::run(TestRun& run) {
  std::unique_lock lock(mutex_);
  if (run.wasLaunched())
    throw std::logic_error("a prepared run is run twice");
  const Arguments& arguments = run.command().arguments;
  if (auto error = failure(arguments, runFailure_))
    return *std::move(error);
  run.identifier_ = ++lastIdentifier_;
  run.running_ = true;
  changed_.notify_all();
  if (onRun_) {
    lock.unlock();
    onRun_(run.command());
    lock.lock();
  }
  const bool ended = changed_.wait_for(lock, std::chrono::seconds(30), [&] {
    return !scripts_[arguments].hangs || run.terminateRequests_ > 0;
  });
  if (!ended)
    ADD_FAILURE() << "a run of " << run.command().executable << " " << joined(arguments)
                  << " has hung for 30 seconds: nothing released it or asked it to end";
  const Script& script = scripts_[arguments];
  ToolResult result = script.result;
  if (runStatus_)
    result = {.output = {}, .exitStatus = *runStatus_};
  if (run.terminateRequests_ > 0)
    result = {.output = script.printedWhenTerminated, .exitStatus = terminated};
  if (run.output() == ToolOutput::discard)
    result.output.clear();
  run.running_ = false;
  return result;
}

void TestChildProcesses::terminate(TestRun& run) {
  const std::lock_guard lock(mutex_);
  if (!run.running_)
    return;
  ++run.terminateRequests_;
  terminatedRuns_.push_back(run.command().arguments);
  changed_.notify_all();
}

std::vector<std::shared_ptr<TestChild>> TestChildProcesses::children() const {
  const std::lock_guard lock(mutex_);
  return children_;
}

std::vector<std::shared_ptr<TestChild>>
TestChildProcesses::children(const Arguments& arguments) const {
  std::vector<std::shared_ptr<TestChild>> found = children();
  std::erase_if(found, [&](const auto& child) { return child->command().arguments != arguments; });
  return found;
}

TestChild& TestChildProcesses::child(const Arguments& arguments) const {
  const auto found = children(arguments);
  if (found.empty())
    throw std::logic_error("no child was spawned with these arguments");
  return *found.back();
}

std::vector<ToolCommand> TestChildProcesses::spawnAttempts() const {
  const std::lock_guard lock(mutex_);
  return spawnAttempts_;
}

std::vector<ToolCommand> TestChildProcesses::detached() const {
  const std::lock_guard lock(mutex_);
  return detached_;
}

std::vector<std::shared_ptr<TestRun>> TestChildProcesses::runs() const {
  const std::lock_guard lock(mutex_);
  return runs_;
}

std::vector<std::shared_ptr<TestRun>> TestChildProcesses::runs(const Arguments& arguments) const {
  std::vector<std::shared_ptr<TestRun>> found = runs();
  std::erase_if(found, [&](const auto& run) { return run->command().arguments != arguments; });
  return found;
}

std::vector<Arguments> TestChildProcesses::terminatedRuns() const {
  const std::lock_guard lock(mutex_);
  return terminatedRuns_;
}

bool TestChildProcesses::awaitHanging(const Arguments& arguments) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, std::chrono::seconds(10), [&] {
    return std::any_of(runs_.begin(), runs_.end(), [&](const auto& run) {
      return run->command().arguments == arguments && run->isRunning();
    });
  });
}

} // namespace driftmark::test
