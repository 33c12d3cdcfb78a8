// How a child on a terminal is put together from its parts, and in which order all of it shuts
// down.

#include "platform/posix/children/PosixChildProcesses.h"

#include <csignal>
#include <optional>
#include <system_error>
#include <utility>

namespace driftmark {

namespace {

class PosixReadHandle final : public ReadHandle {
public:
  explicit PosixReadHandle(std::shared_ptr<TerminalChannel> channel)
      : channel_(std::move(channel)) {}
  PosixReadHandle(const PosixReadHandle&) = delete;
  PosixReadHandle& operator=(const PosixReadHandle&) = delete;
  ~PosixReadHandle() override { channel_->releaseTerminal(); }

  void clearReadabilityHandler() override { channel_->releaseTerminal(); }

private:
  const std::shared_ptr<TerminalChannel> channel_;
};

/// The system discards the exits of children in a process that ignores SIGCHLD.
void keepExitsOfChildren() {
  struct sigaction action {};
  if (sigaction(SIGCHLD, nullptr, &action) == 0 && action.sa_handler == SIG_IGN)
    std::signal(SIGCHLD, SIG_DFL);
}

std::optional<LaunchError> started(IoThread& thread) {
  try {
    thread.start();
    return std::nullopt;
  } catch (const std::system_error& error) {
    return LaunchError{LaunchError::Stage::launch, error.code().message()};
  }
}

} // namespace

PosixChildProcesses::PosixChildProcesses(MainQueue& mainQueue, const std::string& systemRoot)
    : mainQueue_(mainQueue), children_(std::make_shared<ChildRegistry>(systemRoot)) {
  keepExitsOfChildren();
}

PosixChildProcesses::~PosixChildProcesses() {
  shutdown();
}

std::variant<TerminalChild, LaunchError>
PosixChildProcesses::spawn(const ToolCommand& command, DataHandler onData, ExitHandler onExit) {
  children_->reapDetached();
  auto opened = Terminal::open();
  if (auto* const error = std::get_if<LaunchError>(&opened))
    return std::move(*error);
  auto& terminal = std::get<Terminal>(opened);
  if (auto error = started(ioThread_))
    return std::move(*error);

  const int slave = terminal.slave.number();
  auto launched = children_->launch(command, {.standardOutput = slave, .standardError = slave});
  if (auto* const error = std::get_if<LaunchError>(&launched))
    return std::move(*error);
  auto& process = std::get<0>(launched);

  const auto channel = std::make_shared<TerminalChannel>(
      TerminalChannel::Context{mainQueue_, children_, ioThread_.wakeup()}, process,
      std::move(terminal.master), std::move(onData), std::move(onExit));
  remember(channel);
  ioThread_.add(channel);
  // On macOS, this waits until the output is read if the child has already ended.
  terminal.slave.reset();
  return TerminalChild{process, std::make_unique<PosixReadHandle>(channel)};
}

std::shared_ptr<ToolRun> PosixChildProcesses::prepare(const ToolCommand& command,
                                                      ToolOutput output) {
  return std::make_shared<PosixToolRun>(children_, command, output);
}

std::optional<LaunchError> PosixChildProcesses::launchDetached(const ToolCommand& command) {
  children_->reapDetached();
  return children_->launchDetached(command);
}

void PosixChildProcesses::shutdown() {
  children_->reapDetached();
  const auto channels = std::exchange(channels_, {});
  // On macOS, a child ends only once its output is read or its terminal is closed.
  for (const auto& weak : channels)
    if (const auto channel = weak.lock())
      channel->releaseTerminal();
  children_->endAll();
  ioThread_.stop();
  for (const auto& weak : channels)
    if (const auto channel = weak.lock())
      channel->abandon();
}

void PosixChildProcesses::remember(const std::shared_ptr<TerminalChannel>& channel) {
  std::erase_if(channels_, [](const auto& each) { return each.expired(); });
  channels_.push_back(channel);
}

} // namespace driftmark
