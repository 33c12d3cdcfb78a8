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

/// Records the notifications.
class Delegate final : public ApplicationDelegate {
public:
  explicit Delegate(std::function<void()> onLaunch) : onLaunch_(std::move(onLaunch)) {}

  void applicationDidFinishLaunching() override {
    calls_ += "launch ";
    onLaunch_();
  }
  void applicationWillTerminate() override { calls_ += "end "; }

  std::string& calls() { return calls_; }

private:
  const std::function<void()> onLaunch_;
  std::string calls_;
};

class LinuxApplicationTest : public testing::Test {
protected:
  /// Runs the application with this launch. Returns the calls of its delegate.
  std::string run(const std::function<void()>& onLaunch) {
    Delegate delegate(onLaunch);
    application_.setDelegate(&delegate);
    application_.run();
    application_.setDelegate(nullptr);
    return delegate.calls();
  }

  LinuxMainQueue queue_;
  LinuxApplication application_;
};

TEST_F(LinuxApplicationTest, delegateIsNotifiedOfLaunchAndTermination) {
  EXPECT_EQ(run([&] { application_.terminate(); }), "launch end ");
}

TEST_F(LinuxApplicationTest, terminateReturnsAndMayBeCalledAgain) {
  bool continued = false;
  EXPECT_EQ(run([&] {
              application_.terminate();
              application_.terminate();
              queue_.async([&] { continued = true; });
              QCoreApplication::processEvents();
              continued = true;
            }),
            "launch end ");
  EXPECT_TRUE(continued);
}

TEST_F(LinuxApplicationTest, terminateBeforeRunEndsRun) {
  application_.terminate();
  EXPECT_EQ(run([] {}), "launch end ");
}

TEST_F(LinuxApplicationTest, closingWindowsDoesNotEndRun) {
  QLabel window("window");
  EXPECT_EQ(run([&] {
              window.show();
              window.close();
              queue_.after(Seconds(0.02), [&] { application_.terminate(); });
            }),
            "launch end ");
}

/// Refuses to close.
class StubbornWindow final : public QLabel {
public:
  void closeEvent(QCloseEvent* event) override { event->ignore(); }
};

TEST_F(LinuxApplicationTest, windowThatRefusesToCloseDoesNotPreventTermination) {
  StubbornWindow window;
  EXPECT_EQ(run([&] {
              window.show();
              application_.terminate();
            }),
            "launch end ");
}

TEST_F(LinuxApplicationTest, activationActivatesOpenWindow) {
  application_.activateIgnoringOtherApplications();
  QLabel window("window");
  window.show();
  application_.activateIgnoringOtherApplications();
  EXPECT_TRUE(runUntil([&] { return QApplication::activeWindow() == &window; }));
}

TEST_F(LinuxApplicationTest, processIdentifierIsThatOfThisProcess) {
  EXPECT_EQ(application_.processIdentifier(), getpid());
}

} // namespace
} // namespace driftmark::test
