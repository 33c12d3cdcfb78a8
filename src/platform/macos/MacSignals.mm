// How SIGTERM and SIGINT reach the main queue.

#include "platform/macos/MacAdapters.h"
#include "support/Weakly.h"

#include <csignal>
#include <utility>

#include <dispatch/dispatch.h>

namespace driftmark {

namespace {

int number(QuitSignal signal) {
  return signal == QuitSignal::terminate ? SIGTERM : SIGINT;
}

/// Calls its handler on the main queue for each report of a dispatch source. The source has a
/// dispatch queue of its own: that of the main thread runs no block while one of its blocks shows
/// something modal.
class MacSignalSource final : public SignalSource {
public:
  MacSignalSource(dispatch_queue_t reports, dispatch_source_t source, MainQueue& mainQueue,
                  std::function<void()> handler)
      : reports_(reports), source_(source),
        handler_(std::make_shared<const MainQueue::Task>(std::move(handler))) {
    MainQueue* const queue = &mainQueue;
    const auto call = weakly(handler_, [](const MainQueue::Task& task) { task(); });
    dispatch_source_set_event_handler(source_, ^{
      queue->async(call);
    });
    dispatch_resume(source_);
  }
  MacSignalSource(const MacSignalSource&) = delete;

  /// Waits for a report that is being posted: the main queue may be destroyed next.
  ~MacSignalSource() override {
    dispatch_source_cancel(source_);
    dispatch_sync(reports_, ^{
                  });
  }

private:
  const dispatch_queue_t reports_;
  const dispatch_source_t source_;
  const std::shared_ptr<const MainQueue::Task> handler_;
};

} // namespace

void MacSignals::ignore(QuitSignal signal) {
  std::signal(number(signal), SIG_IGN);
}

void MacSignals::restoreDefault(QuitSignal signal) {
  std::signal(number(signal), SIG_DFL);
}

std::unique_ptr<SignalSource> MacSignals::makeSource(QuitSignal signal,
                                                     std::function<void()> handler) {
  const dispatch_queue_t reports =
      dispatch_queue_create("com.tallowmere.driftmark.signals", DISPATCH_QUEUE_SERIAL);
  const dispatch_source_t source = dispatch_source_create(
      DISPATCH_SOURCE_TYPE_SIGNAL, static_cast<uintptr_t>(number(signal)), 0, reports);
  if (source == nil)
    return nullptr;
  return std::make_unique<MacSignalSource>(reports, source, mainQueue_, std::move(handler));
}

} // namespace driftmark
