// Which windows can be translucent on an X display.

#include "desktop/Session.h"
#include "desktop/XClient.h"
#include "harness/BuiltFiles.h"

#include <string>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

constexpr const char* title = "Driftmark";

class X11Display : public testing::Test {
protected:
  X11Display() { session_.writeTool("/usr/bin/brctl", execChildTool("wait")); }

  /// Opens the menu of the program. Returns the depth of its window.
  int depthOfMenu() {
    const RunningProgram program = session_.start();
    icloud::UiDriver driver = session_.awaitDriver();
    const auto strip = screen_.await(title);
    driver.click("MenuBarStrip");
    int depth = 0;
    screen_.await("the menu", [&] {
      for (const auto window : screen_.shown(title))
        if (window != strip)
          depth = screen_.depth(window);
      return depth > 0;
    });
    return depth;
  }

  Session session_;
  XClient screen_{session_.openDisplay().name()};
};

TEST_F(X11Display, menuIsTranslucentOnlyWithCompositor) {
  EXPECT_EQ(depthOfMenu(), 24);
  // It goes to the background as soon as it composes.
  session_.run("/usr/bin/picom", {"-b", "--backend", "xrender", "--config", "/dev/null"});
  EXPECT_EQ(depthOfMenu(), 32);
}

} // namespace
} // namespace driftmark::test
