#include "monitor/SyncMonitor.h"
#include "platform/SystemLog.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/SignalSources.h"
#include "platform/linux/StateLog.h"
#include "platform/linux/SystemRoot.h"
#include "platform/posix/ProcessEnvironment.h"
#include "platform/posix/StandardDescriptors.h"

#include <csignal>
#include <iostream>
#include <variant>

#include <QCoreApplication>

namespace {

using namespace driftmark;

constexpr int badSystemRoot = 2;

/// Watches the drive until SIGTERM or SIGINT comes. Returns the exit status.
int watch(const SystemRoot& root) {
  LinuxPlatform platform(root);
  const Platform ports = platform.ports();
  const auto monitor = SyncMonitor::make(ports);
  const SignalSources signalSources(ports.mainQueue, [&monitor] {
    monitor->stop();
    QCoreApplication::quit();
  });

  StateLog stateLog(ports.systemLog);
  monitor->onChange = [&stateLog, &monitor] { stateLog.note(monitor->overall()); };
  monitor->onChange();
  monitor->start();
  return QCoreApplication::exec();
}

/// Before the signals ask for the orderly end, and while that end goes on, they do nothing.
void ignoreQuitSignals() {
  std::signal(SIGTERM, SIG_IGN);
  std::signal(SIGINT, SIG_IGN);
}

} // namespace

int main(int argc, char* argv[]) {
  openMissingStandardDescriptors();
  const QCoreApplication application(argc, argv);
  const auto root = SystemRoot::of(ProcessEnvironment());
  if (const auto* const error = std::get_if<SystemRoot::Error>(&root)) {
    std::cerr << "driftmark: " << error->message << '\n';
    return badSystemRoot;
  }
  ignoreQuitSignals();
  return watch(std::get<SystemRoot>(root));
}
