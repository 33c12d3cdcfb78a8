#include "platform/linux/SignalSources.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <optional>
#include <system_error>
#include <utility>

#include <unistd.h>

namespace driftmark {

namespace {

/// Where the signal handler writes to. Handlers take no argument of ours.
std::atomic<int> signalPipe = -1;
static_assert(std::atomic<int>::is_always_lock_free, "the signal handler reads it");

void handleSignal(int /*signal*/) {
  const int error = errno;
  const char byte = 0;
  // A full pipe already holds the news.
  [[maybe_unused]] const ssize_t count = write(signalPipe, &byte, 1);
  errno = error;
}

system_calls::Pipe requirePipe() {
  std::optional<system_calls::Pipe> pipe = system_calls::makePipe();
  if (!pipe || !system_calls::setNonBlocking(pipe->readEnd.number()) ||
      !system_calls::setNonBlocking(pipe->writeEnd.number()))
    throw std::system_error(errno, std::generic_category(), "pipe");
  return std::move(*pipe);
}

} // namespace

SignalSources::SignalSources(MainQueue& mainQueue, std::function<void()> onSignal)
    : mainQueue_(mainQueue),
      onSignal_(std::make_shared<const std::function<void()>>(std::move(onSignal))),
      pipe_(requirePipe()), notifier_(pipe_.readEnd.number(), QSocketNotifier::Read) {
  QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] { forward(); });
  arm();
}

void SignalSources::arm() {
  signalPipe = pipe_.writeEnd.number();
  struct sigaction action {};
  action.sa_handler = handleSignal;
  action.sa_flags = SA_RESTART;
  for (std::size_t i = 0; i < caught.size(); ++i)
    sigaction(caught[i], &action, &before_[i]);
}

SignalSources::~SignalSources() {
  for (std::size_t i = 0; i < caught.size(); ++i)
    sigaction(caught[i], &before_[i], nullptr);
  signalPipe = -1;
}

void SignalSources::forward() {
  std::array<char, 64> bytes{};
  while (read(pipe_.readEnd.number(), bytes.data(), bytes.size()) > 0) {
  }
  mainQueue_.async([weak = std::weak_ptr(onSignal_)] {
    if (const auto onSignal = weak.lock())
      (*onSignal)();
  });
}

} // namespace driftmark
