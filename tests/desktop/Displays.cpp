// Which display the program is on under Wayland.

#include "desktop/Session.h"
#include "desktop/XClient.h"
#include "harness/BuiltFiles.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

/// A Wayland session in memory, with an X display.
class Displays : public testing::Test {
protected:
  Displays() {
    session_.writeTool("/usr/bin/brctl", execChildTool("wait"));
    session_.setVariable("WAYLAND_DISPLAY", "wayland-test");
    server_.emplace(
        session_.start("/usr/bin/weston", {"--backend=headless-backend.so", "--xwayland",
                                           "--socket=wayland-test", "--idle-time=0"}));
    const std::string listening = "xserver listening on display ";
    server_->log.readUntil(listening);
    const std::string& log = server_->log.readUntil("\n", 1);
    const auto begin = log.find(listening) + listening.size();
    display_ = log.substr(begin, log.find('\n', begin) - begin);
    session_.setVariable("DISPLAY", display_);
  }

  Session session_;
  std::optional<RunningProgram> server_;
  std::string display_;
};

TEST_F(Displays, stripIsOnXDisplayUnderWayland) {
  XClient screen(display_);
  const RunningProgram program = session_.start();
  const auto strip = screen.await("Driftmark");
  EXPECT_EQ(screen.firstAtom(strip, "_NET_WM_WINDOW_TYPE"), "_NET_WM_WINDOW_TYPE_DOCK");
}

TEST_F(Displays, chosenPlatformHolds) {
  session_.setVariable("QT_QPA_PLATFORM", "wayland");
  RunningProgram program = session_.start();
  icloud::UiDriver driver = session_.awaitDriver();
  driver.awaitWindow([](const icloud::Window& window) { return !window.title.empty(); });
  XClient screen(display_);
  EXPECT_TRUE(screen.shown("Driftmark").empty());
}

} // namespace
} // namespace driftmark::test
