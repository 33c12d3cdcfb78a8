#pragma once

#include "ports/MainQueue.h"
#include "ports/Signals.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <utility>

namespace driftmark::test {

/// Signals sent by the test.
class TestSignals final : public Signals {
public:
  explicit TestSignals(MainQueue& mainQueue) : mainQueue_(mainQueue) {}

  void ignore(QuitSignal signal) override { ignored_.insert(signal); }
  void restoreDefault(QuitSignal signal) override { ignored_.erase(signal); }

  std::unique_ptr<SignalSource> makeSource(QuitSignal signal,
                                           std::function<void()> handler) override {
    if (refuses_)
      return nullptr;
    handlers_[signal] = std::make_shared<const std::function<void()>>(std::move(handler));
    return std::make_unique<Source>(*this, signal);
  }

  /// Makes the system give no sources.
  void refuseSources() { refuses_ = true; }

  bool isIgnored(QuitSignal signal) const { return ignored_.contains(signal); }

  /// Whether a source observes the signal.
  bool isWatched(QuitSignal signal) const { return handlers_.contains(signal); }

  /// Delivers the signal. It must be observed by a source or ignored.
  void send(QuitSignal signal) {
    const auto handler = handlers_.find(signal);
    if (handler == handlers_.end()) {
      if (!isIgnored(signal))
        throw std::logic_error("the signal would have ended the program");
      return;
    }
    mainQueue_.async([weak = std::weak_ptr(handler->second)] {
      if (const auto call = weak.lock())
        (*call)();
    });
  }

private:
  class Source final : public SignalSource {
  public:
    Source(TestSignals& signals, QuitSignal signal) : signals_(signals), signal_(signal) {}
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    ~Source() override { signals_.handlers_.erase(signal_); }

  private:
    TestSignals& signals_;
    QuitSignal signal_;
  };

  MainQueue& mainQueue_;
  bool refuses_ = false;
  std::set<QuitSignal> ignored_;
  std::map<QuitSignal, std::shared_ptr<const std::function<void()>>> handlers_;
};

} // namespace driftmark::test
