#include "RunningProgram.h"

#include "EventLoop.h"
#include "platform/posix/SystemCalls.h"
#include "platform/posix/children/LaunchTool.h"

#include <array>
#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <utility>
#include <variant>

#include <QObject>

#include <sys/wait.h>
#include <unistd.h>

namespace driftmark::test {

RunningProgram::RunningProgram(const std::string& executable) {
  auto pipe = makePipe();
  if (!pipe)
    throw std::runtime_error("no pipe");
  const auto launched = launchTool(executable, {}, {.standardError = pipe->writeEnd.number()});
  if (const auto* const error = std::get_if<LaunchError>(&launched))
    throw std::runtime_error(error->description);
  pid_ = std::get<pid_t>(launched);
  errorPipe_ = std::move(pipe->readEnd);
  notifier_.emplace(errorPipe_.number(), QSocketNotifier::Read);
  QObject::connect(&*notifier_, &QSocketNotifier::activated, &*notifier_, [this] { readErrors(); });
}

RunningProgram::~RunningProgram() {
  send(SIGKILL);
  if (!reaped_)
    waitpid(pid_, nullptr, 0);
}

void RunningProgram::send(int signal) const {
  if (!reaped_)
    kill(pid_, signal);
}

std::string RunningProgram::descriptor(const std::string& number) const {
  const auto folder = std::filesystem::path("/proc") / std::to_string(pid_) / "fd";
  return std::filesystem::read_symlink(folder / number).string();
}

void RunningProgram::readErrors() {
  std::array<char, 4096> buffer{};
  const ssize_t count = read(errorPipe_.number(), buffer.data(), buffer.size());
  atEnd_ = count <= 0;
  if (atEnd_)
    notifier_->setEnabled(false);
  else
    errors_.append(buffer.data(), static_cast<std::size_t>(count));
}

bool RunningProgram::says(const std::string& text) {
  runUntil([&] { return hasSaid(text) || atEnd_; });
  return hasSaid(text);
}

std::optional<int> RunningProgram::exitStatus() {
  runUntil([this] { return atEnd_; });
  int status = 0;
  reaped_ = waitpid(pid_, &status, 0) == pid_;
  return reaped_ && WIFEXITED(status) ? std::optional<int>(WEXITSTATUS(status)) : std::nullopt;
}

} // namespace driftmark::test
