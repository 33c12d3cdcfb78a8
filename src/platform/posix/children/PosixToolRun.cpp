// How a tool is run to its end by one blocking call, and what ends the call early.

#include "platform/posix/SystemErrors.h"
#include "platform/posix/children/PosixChildProcesses.h"

#include <array>
#include <cerrno>
#include <utility>

#include <poll.h>
#include <unistd.h>

namespace driftmark {

namespace {

/// `captured` is the descriptor for the captured output.
OutputRouting routing(ToolOutput output, int captured) {
  switch (output) {
  case ToolOutput::capture:
    return {.standardOutput = captured, .standardError = OutputRouting::nullDevice};
  case ToolOutput::captureError:
    return {.standardOutput = STDOUT_FILENO, .standardError = captured};
  case ToolOutput::discard:
    break;
  }
  return {};
}

/// Appends the bytes in the pipe to `output`. False at the end of the pipe.
bool readSome(int pipe, std::string& output) {
  std::array<char, 65536> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by read
  const ssize_t count = read(pipe, buffer.data(), buffer.size());
  if (count > 0)
    output.append(buffer.data(), static_cast<std::size_t>(count));
  return count > 0 || (count < 0 && errno == EINTR);
}

} // namespace

PosixToolRun::PosixToolRun(std::shared_ptr<ChildRegistry> children, ToolCommand command,
                           ToolOutput output)
    : children_(std::move(children)), command_(std::move(command)), output_(output) {}

std::int32_t PosixToolRun::identifier() const {
  const auto child = launched();
  return child ? child->identifier() : 0;
}

bool PosixToolRun::isRunning() const {
  const auto child = launched();
  return child && child->isRunning();
}

void PosixToolRun::terminate() {
  if (const auto child = launched())
    child->terminate();
}

std::variant<ToolResult, LaunchError> PosixToolRun::run() {
  Pipe pipe;
  if (output_ != ToolOutput::discard) {
    std::optional<Pipe> made = makePipe();
    if (!made)
      return launchError(LaunchError::Stage::launch, errno);
    pipe = std::move(*made);
  }
  auto child = launch(routing(output_, pipe.writeEnd.number()));
  if (auto* const error = std::get_if<LaunchError>(&child))
    return std::move(*error);
  pipe.writeEnd.reset();
  return readToEnd(*std::get<0>(child), std::move(pipe.readEnd));
}

std::variant<std::shared_ptr<PosixChildProcess>, LaunchError>
PosixToolRun::launch(OutputRouting output) {
  auto child = children_->launch(command_, output);
  if (const auto* const launched = std::get_if<0>(&child)) {
    const std::lock_guard lock(mutex_);
    child_ = *launched;
  }
  return child;
}

/// Reaps the child as soon as it ends, even while other processes keep its pipe open.
ToolResult PosixToolRun::readToEnd(PosixChildProcess& child, FileDescriptor pipe) const {
  ToolResult result;
  bool ended = false;
  while (pipe.isOpen() || !ended) {
    const int closing = pipe.isOpen() ? children_->closingDescriptor() : -1;
    std::array<pollfd, 3> watched{
        {{pipe.number(), POLLIN, 0}, {child.exitDescriptor(), POLLIN, 0}, {closing, POLLIN, 0}}};
    if (poll(watched.data(), watched.size(), -1) < 0)
      continue;
    const bool closed = watched[2].revents != 0;
    if (closed || (watched[0].revents != 0 && !readSome(pipe.number(), result.output)))
      pipe.reset();
    if (watched[1].revents != 0) {
      result.exitStatus = children_->reap(child);
      ended = true;
    }
  }
  return result;
}

std::shared_ptr<PosixChildProcess> PosixToolRun::launched() const {
  const std::lock_guard lock(mutex_);
  return child_;
}

} // namespace driftmark
