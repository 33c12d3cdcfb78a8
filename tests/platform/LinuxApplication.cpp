#include "platform/linux/runloop/LinuxApplication.h"

#include "harness/qt/EventLoop.h"
#include "platform/linux/runloop/LinuxMainQueue.h"

#include <functional>
#include <string>
#include <utility>

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>

#include <gtest/gtest.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

/// Writes down what it hears.
class Delegate final : public ApplicationDelegate {
public:
  explicit Delegate(std::function<void()> onLaunch) : onLaunch_(std::move(onLaunch)) {}

  void applicationDidFinishLaunching() override {
    heard_ += "launch ";
    onLaunch_();
  }
  void applicationWillTerminate() override { heard_ += "end "; }

  std::string& heard() { return heard_; }

private:
  const std::function<void()> onLaunch_;
  std::string heard_;
};

class QtApplicationTest : public testing::Test {
protected:
  /// Runs the application with this launch. What its delegate heard.
  std::string run(const std::function<void()>& onLaunch) {
    Delegate delegate(onLaunch);
    application_.setDelegate(&delegate);
    application_.run();
    application_.setDelegate(nullptr);
    return delegate.heard();
  }

  LinuxMainQueue queue_;
  LinuxApplication application_;
};

TEST_F(QtApplicationTest, delegateHearsOfLaunchAndEnd) {
  EXPECT_EQ(run([&] { application_.terminate(); }), "launch end ");
}

TEST_F(QtApplicationTest, callerOfTerminateGoesOnAndMayAskAgain) {
  bool wentOn = false;
  EXPECT_EQ(run([&] {
              application_.terminate();
              application_.terminate();
              queue_.async([&] { wentOn = true; });
              QCoreApplication::processEvents();
              wentOn = true;
            }),
            "launch end ");
  EXPECT_TRUE(wentOn);
}

TEST_F(QtApplicationTest, endAskedForBeforeTheRunComesWithIt) {
  application_.terminate();
  EXPECT_EQ(run([] {}), "launch end ");
}

TEST_F(QtApplicationTest, closedWindowsDoNotEndTheRun) {
  QLabel window("window");
  EXPECT_EQ(run([&] {
              window.show();
              window.close();
              queue_.after(Seconds(0.02), [&] { application_.terminate(); });
            }),
            "launch end ");
}

/// Says no when it is asked to close.
class StubbornWindow final : public QLabel {
public:
  void closeEvent(QCloseEvent* event) override { event->ignore(); }
};

TEST_F(QtApplicationTest, windowThatStaysOpenDoesNotKeepTheEndAway) {
  StubbornWindow window;
  EXPECT_EQ(run([&] {
              window.show();
              application_.terminate();
            }),
            "launch end ");
}

TEST_F(QtApplicationTest, activationTakesWhatWindowsThereAre) {
  application_.activateIgnoringOtherApplications();
  QLabel window("window");
  window.show();
  application_.activateIgnoringOtherApplications();
  EXPECT_TRUE(runUntil([&] { return QApplication::activeWindow() == &window; }));
}

TEST_F(QtApplicationTest, processHasItsNumber) {
  EXPECT_EQ(application_.processIdentifier(), getpid());
}

} // namespace
} // namespace driftmark::test
