// How tests run the Qt event loop: with a deadline.

#include "harness/qt/EventLoop.h"

#include "harness/Waiting.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QObject>
#include <QTimer>

#include <gtest/gtest.h>

namespace driftmark::test {

bool runUntil(const std::function<bool()>& done, const char* file, int line) {
  bool isLate = false;
  QTimer deadline;
  QObject::connect(&deadline, &QTimer::timeout, &deadline, [&isLate] { isLate = true; });
  deadline.start(maxWait);
  while (!done() && !isLate)
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  const bool isDone = done();
  if (!isDone)
    ADD_FAILURE_AT(file, line) << "timed out waiting for this condition";
  return isDone;
}

bool pollUntil(const std::function<bool()>& done, const char* file, int line) {
  QTimer poll;
  poll.start(std::chrono::milliseconds(1));
  return runUntil(done, file, line);
}

void runFor(std::chrono::duration<double> duration) {
  const auto end = std::chrono::steady_clock::now() + duration;
  QTimer wake;
  wake.setTimerType(Qt::PreciseTimer);
  wake.start(std::chrono::milliseconds(1));
  runUntil([end] { return std::chrono::steady_clock::now() >= end; });
}

} // namespace driftmark::test
