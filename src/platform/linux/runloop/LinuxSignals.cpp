// How a signal reaches its handler on the main queue.

#include "platform/linux/runloop/LinuxSignals.h"

#include "platform/posix/SystemCalls.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <optional>
#include <utility>

#include <QObject>
#include <QSocketNotifier>

#include <unistd.h>

namespace driftmark {

namespace {

int number(QuitSignal signal) {
  return signal == QuitSignal::terminate ? SIGTERM : SIGINT;
}

/// The pipes that the signal handlers write to. A signal handler receives no pointer.
std::atomic<int> terminatePipe = -1;
std::atomic<int> interruptPipe = -1;
static_assert(std::atomic<int>::is_always_lock_free, "the signal handlers read it");

std::atomic<int>& pipeOf(int signal) {
  return signal == SIGTERM ? terminatePipe : interruptPipe;
}

void handleSignal(int signal) {
  const int error = errno;
  const char byte = 0;
  // A full pipe wakes the reader up anyway.
  [[maybe_unused]] const ssize_t count = write(pipeOf(signal), &byte, 1);
  errno = error;
}

class LinuxSignalSource final : public SignalSource {
public:
  LinuxSignalSource(MainQueue& mainQueue, QuitSignal signal, std::function<void()> handler,
                    Pipe pipe)
      : mainQueue_(mainQueue), signal_(number(signal)),
        handler_(std::make_shared<const std::function<void()>>(std::move(handler))),
        pipe_(std::move(pipe)), notifier_(pipe_.readEnd.number(), QSocketNotifier::Read) {
    QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] { forward(); });
    pipeOf(signal_) = pipe_.writeEnd.number();
    struct sigaction action {};
    action.sa_handler = handleSignal;
    action.sa_flags = SA_RESTART;
    sigaction(signal_, &action, &before_);
  }
  LinuxSignalSource(const LinuxSignalSource&) = delete;
  LinuxSignalSource& operator=(const LinuxSignalSource&) = delete;
  ~LinuxSignalSource() override {
    sigaction(signal_, &before_, nullptr);
    pipeOf(signal_) = -1;
  }

private:
  void forward() {
    std::array<char, 64> bytes{};
    while (read(pipe_.readEnd.number(), bytes.data(), bytes.size()) > 0) {
    }
    mainQueue_.async([weak = std::weak_ptr(handler_)] {
      if (const auto handler = weak.lock())
        (*handler)();
    });
  }

  MainQueue& mainQueue_;
  const int signal_;
  const std::shared_ptr<const std::function<void()>> handler_;
  const Pipe pipe_;
  QSocketNotifier notifier_;
  struct sigaction before_ {};
};

std::optional<Pipe> makeNonBlockingPipe() {
  std::optional<Pipe> pipe = makePipe();
  if (pipe && (!setNonBlocking(pipe->readEnd.number()) || !setNonBlocking(pipe->writeEnd.number())))
    pipe.reset();
  return pipe;
}

} // namespace

void LinuxSignals::ignore(QuitSignal signal) {
  std::signal(number(signal), SIG_IGN);
}

void LinuxSignals::restoreDefault(QuitSignal signal) {
  std::signal(number(signal), SIG_DFL);
}

std::unique_ptr<SignalSource> LinuxSignals::makeSource(QuitSignal signal,
                                                       std::function<void()> handler) {
  auto pipe = makeNonBlockingPipe();
  if (!pipe)
    return nullptr;
  return std::make_unique<LinuxSignalSource>(mainQueue_, signal, std::move(handler),
                                             *std::move(pipe));
}

} // namespace driftmark
