// How the program starts: accessory, older copies, delegate, signals, run loop.

#include "app/Program.h"

#include "app/AppDelegate.h"
#include "app/SingleInstance.h"
#include "ports/Application.h"
#include "ports/Signals.h"
#include "support/Log.h"

#include <memory>
#include <utility>
#include <vector>

namespace driftmark {

namespace {

constexpr const char* name(QuitSignal signal) {
  return signal == QuitSignal::terminate ? "SIGTERM" : "SIGINT";
}

/// From now on SIGTERM and SIGINT ask for the orderly end. Without `ignore` their default action
/// would end the process before the source could deliver them. A signal that cannot be delivered
/// keeps its default action, so that the program can still be ended.
std::vector<std::unique_ptr<SignalSource>> quitOnSignals(const Platform& platform) {
  std::vector<std::unique_ptr<SignalSource>> sources;
  sources.reserve(2);
  for (const QuitSignal signal : {QuitSignal::terminate, QuitSignal::interrupt}) {
    platform.signals.ignore(signal);
    auto source = platform.signals.makeSource(
        signal, [&application = platform.application] { application.terminate(); });
    if (source) {
      sources.push_back(std::move(source));
      continue;
    }
    platform.signals.restoreDefault(signal);
    log(platform.systemLog, {"cannot catch ", name(signal), ": it ends the program at once"});
  }
  return sources;
}

} // namespace

int runProgram(const Platform& platform) {
  Application& app = platform.application;
  app.becomeAccessory();
  SingleInstance::takeOver(platform);
  AppDelegate delegate(platform);
  app.setDelegate(&delegate);
  const auto signalSources = quitOnSignals(platform);
  app.run();
  app.setDelegate(nullptr);
  return 0;
}

} // namespace driftmark
