// A tool for the tests of child processes: it runs the steps given as its arguments. It has one
// thread. NOLINTBEGIN(concurrency-mt-unsafe)

#include "FloodPattern.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace {

using namespace driftmark::test;

constexpr int wrongUse = 120;
constexpr int writeFailed = 121;

void write(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(descriptor, text.data(), text.size());
    if (count >= 0)
      text.remove_prefix(static_cast<std::size_t>(count));
    else if (errno != EINTR)
      _exit(writeFailed);
  }
}

void print(std::string_view text) {
  write(STDOUT_FILENO, text);
}

/// The steps that remain to be run.
class Arguments {
public:
  Arguments(char** first, char** end) : next_(first), end_(end) {}

  bool isEmpty() const { return next_ == end_; }
  bool has(std::string_view text) const { return std::find(next_, end_, text) != end_; }

  std::string take() {
    if (isEmpty())
      _exit(wrongUse);
    return *next_++;
  }
  std::size_t takeNumber() { return std::stoul(take()); }

private:
  char** next_;
  char** end_;
};

std::string bytesOf(const std::string& hex) {
  std::string bytes;
  for (std::size_t at = 0; at + 1 < hex.size(); at += 2)
    bytes += static_cast<char>(std::stoi(hex.substr(at, 2), nullptr, 16));
  return bytes;
}

void printMany(std::size_t count, const std::string& text) {
  constexpr std::size_t maxBlock = 65536;
  const std::size_t perBlock =
      std::max<std::size_t>(1, maxBlock / std::max<std::size_t>(1, text.size()));
  while (count > 0) {
    const std::size_t repetitions = std::min(count, perBlock);
    std::string block;
    for (std::size_t i = 0; i < repetitions; ++i)
      block += text;
    print(block);
    count -= repetitions;
  }
}

void flood(FloodPattern& pattern, std::size_t records) {
  constexpr std::size_t perBlock = 1024;
  for (; records > 0; records -= std::min(records, perBlock))
    print(pattern.next(std::min(records, perBlock)));
}

void floodForever() {
  FloodPattern pattern;
  for (;;)
    flood(pattern, 1024);
}

/// Writes until the terminal has accepted nothing for a while, writes to `report` how many bytes it
/// accepted, and then writes the remaining `records`.
void floodUntilBlocked(const std::string& report, std::size_t records) {
  constexpr int blockedMilliseconds = 300;
  const int flags = fcntl(STDOUT_FILENO, F_GETFL);
  fcntl(STDOUT_FILENO, F_SETFL, flags | O_NONBLOCK);
  const std::string text = FloodPattern().next(records);
  std::size_t written = 0;
  pollfd output{STDOUT_FILENO, POLLOUT, 0};
  while (written < text.size() && poll(&output, 1, blockedMilliseconds) > 0) {
    const ssize_t count = ::write(STDOUT_FILENO, text.data() + written, text.size() - written);
    written += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
  fcntl(STDOUT_FILENO, F_SETFL, flags);
  const int fifo = open(report.c_str(), O_WRONLY | O_CLOEXEC);
  write(fifo, std::to_string(written));
  close(fifo);
  print(std::string_view(text).substr(written));
}

std::size_t inputSize() {
  std::array<char, 4096> buffer{};
  std::size_t size = 0;
  for (ssize_t count = 1; count > 0; size += static_cast<std::size_t>(count))
    count = std::max<ssize_t>(0, read(STDIN_FILENO, buffer.data(), buffer.size()));
  return size;
}

std::string descriptors() {
  DIR* const folder = opendir("/proc/self/fd");
  std::string text;
  while (const dirent* const entry = readdir(folder)) {
    const std::string name = entry->d_name;
    if (name != "." && name != ".." && name != std::to_string(dirfd(folder)))
      text += name + " ";
  }
  closedir(folder);
  return text;
}

/// The signals that are blocked or do not have their default action.
std::string unusualSignals() {
  sigset_t blocked{};
  sigprocmask(SIG_BLOCK, nullptr, &blocked);
  std::string text;
  for (int number = 1; number < NSIG; ++number) {
    struct sigaction action {};
    if (sigismember(&blocked, number) == 1)
      text += "blocked " + std::to_string(number) + " ";
    if (sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_DFL)
      text += "caught " + std::to_string(number) + " ";
  }
  return text;
}

std::string terminalMode() {
  termios mode{};
  winsize size{};
  if (tcgetattr(STDOUT_FILENO, &mode) != 0 || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0)
    return "none";
  const bool addsReturns = (mode.c_oflag & OPOST) != 0 && (mode.c_oflag & ONLCR) != 0;
  return std::string(addsReturns ? "CR LF " : "LF ") + std::to_string(size.ws_row) + "x" +
         std::to_string(size.ws_col);
}

void waitForSignal() {
  sigset_t none{};
  sigemptyset(&none);
  sigsuspend(&none);
}

void awaitTerminate() {
  sigset_t set{};
  sigemptyset(&set);
  sigaddset(&set, SIGTERM);
  int signal = 0;
  sigwait(&set, &signal);
}

void blockTerminate() {
  sigset_t set{};
  sigemptyset(&set);
  sigaddset(&set, SIGTERM);
  sigprocmask(SIG_BLOCK, &set, nullptr);
}

/// Starts another process that does `work` and outlives this one. Prints its identifier on a line.
void fork(const std::function<void()>& work) {
  const pid_t pid = ::fork();
  if (pid == 0) {
    alarm(120);
    work();
    _exit(0);
  }
  print(std::to_string(pid) + "\n");
}

void raiseWithDefault(int signal) {
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

std::string variable(const std::string& name) {
  const char* const value = std::getenv(name.c_str());
  return value ? value : "(not set)";
}

using Step = std::function<void(Arguments&)>;

const std::map<std::string_view, Step>& outputSteps() {
  static const std::map<std::string_view, Step> steps{
      {"print", [](Arguments& from) { print(from.take()); }},
      {"print-error", [](Arguments& from) { write(STDERR_FILENO, from.take()); }},
      {"print-bytes", [](Arguments& from) { print(bytesOf(from.take())); }},
      {"print-many",
       [](Arguments& from) {
         const std::size_t count = from.takeNumber();
         printMany(count, from.take());
       }},
      {"print-when-terminated",
       [](Arguments& from) {
         awaitTerminate();
         print(from.take());
       }},
      {"flood",
       [](Arguments& from) {
         FloodPattern pattern;
         flood(pattern, from.takeNumber());
       }},
      {"flood-forever", [](Arguments&) { floodForever(); }},
      {"flood-until-blocked",
       [](Arguments& from) {
         const std::string report = from.take();
         floodUntilBlocked(report, from.takeNumber());
       }},
  };
  return steps;
}

const std::map<std::string_view, Step>& environmentSteps() {
  static const std::map<std::string_view, Step> steps{
      {"print-input-size", [](Arguments&) { print(std::to_string(inputSize())); }},
      {"print-variable", [](Arguments& from) { print(variable(from.take())); }},
      {"print-folder", [](Arguments&) { print(std::filesystem::current_path().string()); }},
      {"print-name",
       [](Arguments&) { print(std::filesystem::read_symlink("/proc/self/exe").string()); }},
      {"print-descriptors", [](Arguments&) { print(descriptors()); }},
      {"print-signals", [](Arguments&) { print(unusualSignals()); }},
      {"print-terminals",
       [](Arguments&) {
         for (int descriptor = 0; descriptor < 3; ++descriptor)
           print(isatty(descriptor) == 1 ? "terminal " : "other ");
       }},
      {"print-terminal-mode", [](Arguments&) { print(terminalMode()); }},
      {"print-session",
       [](Arguments&) { print(std::to_string(getsid(0)) + " " + std::to_string(getpgrp())); }},
  };
  return steps;
}

const std::map<std::string_view, Step>& processSteps() {
  static const std::map<std::string_view, Step> steps{
      {"wait", [](Arguments&) { waitForSignal(); }},
      {"exit", [](Arguments& from) { _exit(static_cast<int>(from.takeNumber())); }},
      {"raise", [](Arguments& from) { raiseWithDefault(static_cast<int>(from.takeNumber())); }},
      {"open", [](Arguments& from) { open(from.take().c_str(), O_RDONLY | O_CLOEXEC); }},
      {"ignore-terminate", [](Arguments&) { std::signal(SIGTERM, SIG_IGN); }},
      {"close-output",
       [](Arguments&) {
         close(STDOUT_FILENO);
         close(STDERR_FILENO);
       }},
      {"fork-holder", [](Arguments&) { fork(waitForSignal); }},
      {"fork-flooder", [](Arguments&) { fork(floodForever); }},
  };
  return steps;
}

void runStep(const std::string& name, Arguments& from) {
  for (const auto* const steps : {&outputSteps(), &environmentSteps(), &processSteps()}) {
    if (const auto step = steps->find(name); step != steps->end()) {
      step->second(from);
      return;
    }
  }
  _exit(wrongUse);
}

} // namespace

int main(int argc, char* argv[]) {
  Arguments arguments(argv + 1, argv + argc);
  if (arguments.has("print-when-terminated"))
    blockTerminate();
  while (!arguments.isEmpty())
    runStep(arguments.take(), arguments);
  return 0;
}

// NOLINTEND(concurrency-mt-unsafe)
