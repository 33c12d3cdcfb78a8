#include "EventLoop.h"

#include <chrono>

#include <QCoreApplication>
#include <QEventLoop>
#include <QObject>
#include <QTimer>

namespace driftmark::test {

namespace {

constexpr std::chrono::seconds deadline{120};

} // namespace

bool runUntil(const std::function<bool()>& done) {
  bool late = false;
  QTimer watchdog;
  QObject::connect(&watchdog, &QTimer::timeout, &watchdog, [&late] { late = true; });
  watchdog.start(deadline);
  while (!done() && !late)
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  return done();
}

bool pollUntil(const std::function<bool()>& done) {
  QTimer look;
  look.start(std::chrono::milliseconds(1));
  return runUntil(done);
}

void runFor(Seconds duration) {
  const auto end = std::chrono::steady_clock::now() + duration;
  QTimer wake;
  wake.setTimerType(Qt::PreciseTimer);
  wake.start(std::chrono::milliseconds(1));
  runUntil([end] { return std::chrono::steady_clock::now() >= end; });
}

} // namespace driftmark::test
