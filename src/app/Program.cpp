// How the program starts: accessory, older copies, delegate, signals, run loop.

#include "app/Program.h"

#include "app/AppDelegate.h"
#include "app/SingleInstance.h"
#include "ports/Application.h"
#include "ports/Signals.h"

#include <memory>
#include <vector>

namespace driftmark {

namespace {

/// From now on SIGTERM and SIGINT ask for the orderly end. Without `ignore` their default action
/// would end the process before the source could deliver them.
std::vector<std::unique_ptr<SignalSource>> quitOnSignals(const Platform& platform) {
  std::vector<std::unique_ptr<SignalSource>> sources;
  sources.reserve(2);
  for (const QuitSignal signal : {QuitSignal::terminate, QuitSignal::interrupt}) {
    platform.signals.ignore(signal);
    sources.push_back(platform.signals.makeSource(
        signal, [&application = platform.application] { application.terminate(); }));
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
