// How the event loop is run and ended.

#include "platform/linux/runloop/LinuxApplication.h"

#include <utility>

#include <QApplication>
#include <QMetaObject>
#include <QObject>
#include <QWidget>

#include <unistd.h>

namespace driftmark {

void LinuxApplication::run() {
  QGuiApplication::setQuitOnLastWindowClosed(false);
  QObject context;
  QMetaObject::invokeMethod(
      &context,
      [this] {
        if (delegate_)
          delegate_->applicationDidFinishLaunching();
      },
      Qt::QueuedConnection);
  QCoreApplication::exec();
  willTerminate();
}

void LinuxApplication::willTerminate() {
  if (ApplicationDelegate* const delegate = std::exchange(delegate_, nullptr))
    delegate->applicationWillTerminate();
}

void LinuxApplication::activateIgnoringOtherApplications() {
  for (QWidget* const window : QApplication::topLevelWidgets()) {
    if (!window->isVisible() || window->testAttribute(Qt::WA_ShowWithoutActivating))
      continue;
    window->raise();
    window->activateWindow();
  }
}

void LinuxApplication::terminate() {
  isTerminating_ = true;
  QMetaObject::invokeMethod(
      QCoreApplication::instance(), [] { QCoreApplication::exit(); }, Qt::QueuedConnection);
}

std::unique_ptr<Activity> LinuxApplication::beginActivity(const std::string& /*reason*/) {
  return std::make_unique<Activity>();
}

std::int32_t LinuxApplication::processIdentifier() const {
  return getpid();
}

} // namespace driftmark
