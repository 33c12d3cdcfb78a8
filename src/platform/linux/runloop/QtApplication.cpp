#include "platform/linux/runloop/QtApplication.h"

#include <utility>

#include <QApplication>
#include <QMetaObject>
#include <QObject>
#include <QWidget>

#include <unistd.h>

namespace driftmark {

void QtApplication::run() {
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

void QtApplication::willTerminate() {
  if (ApplicationDelegate* const delegate = std::exchange(delegate_, nullptr))
    delegate->applicationWillTerminate();
}

void QtApplication::activateIgnoringOtherApplications() {
  for (QWidget* const window : QApplication::topLevelWidgets()) {
    if (!window->isVisible() || window->windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus))
      continue;
    window->raise();
    window->activateWindow();
  }
}

void QtApplication::terminate() {
  QMetaObject::invokeMethod(
      QCoreApplication::instance(), [] { QCoreApplication::exit(); }, Qt::QueuedConnection);
}

std::int32_t QtApplication::processIdentifier() const {
  return getpid();
}

} // namespace driftmark
