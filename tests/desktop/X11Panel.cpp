// What window managers learn about the strip, and what they make of it.

#include "desktop/Session.h"
#include "desktop/XClient.h"
#include "harness/BuiltFiles.h"
#include "harness/ui/ProgramUi.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using icloud::Window;
using testing::ElementsAre;

constexpr std::uint32_t allDesktops = 0xFFFFFFFF;
constexpr int stripHeight = 24;

class X11Panel : public testing::Test {
protected:
  X11Panel() {
    session_.writeTool("/usr/bin/brctl", execChildTool("wait"));
    std::filesystem::create_directories(session_.home() /
                                        "Library/Mobile Documents/com~apple~CloudDocs");
  }

  void startWindowManager() {
    // Windows that were there before the manager get no focus.
    const std::string isReady = "xprop -root -f MANAGED 32c -set MANAGED 1";
    manager_.emplace(session_.start("/usr/bin/openbox", {"--sm-disable", "--startup", isReady}));
    screen_.await("the window manager",
                  [&] { return !screen_.property(screen_.root(), "MANAGED").empty(); });
  }

  void startProgram() {
    program_.emplace(session_.start());
    driver_.emplace(session_.awaitDriver());
    strip_ = screen_.await("Driftmark");
    driver_->awaitWindow([](const Window& window) { return window.kind == Window::Kind::other; });
  }

  void startBoth() {
    startWindowManager();
    startProgram();
  }

  void use(std::vector<std::string> input) { session_.run("/usr/bin/xdotool", std::move(input)); }

  void clickOnStrip() {
    const QPoint middle = screen_.place(strip_).center();
    use({"mousemove", std::to_string(middle.x()), std::to_string(middle.y()), "click", "1"});
  }

  void awaitNoMenu() {
    driver_->awaitAbsence([](const Window& window) { return window.kind == Window::Kind::menu; });
  }

  /// Waits until that window has the keyboard focus.
  void awaitFocus(XClient::Window window) {
    screen_.await("the focus", [&] { return screen_.focus() == window; });
  }

  /// Presses a key that that window has to receive.
  void expectKeysReach(XClient::Window window) {
    const int before = screen_.keys(window);
    use({"key", "space"});
    screen_.await("the key", [&] { return screen_.keys(window) > before; });
  }

  void awaitTop(XClient::Window window, int top) {
    screen_.await("the place", [&] { return screen_.place(window).top() == top; });
  }

  Session session_;
  XClient screen_{session_.openDisplay().name()};
  std::optional<RunningProgram> manager_;
  std::optional<RunningProgram> program_;
  std::optional<icloud::UiDriver> driver_;
  XClient::Window strip_ = 0;
};

TEST_F(X11Panel, stripIsPanelOnAllWorkspaces) {
  startBoth();
  EXPECT_EQ(screen_.firstAtom(strip_, "_NET_WM_WINDOW_TYPE"), "_NET_WM_WINDOW_TYPE_DOCK");
  EXPECT_THAT(screen_.property(strip_, "_NET_WM_DESKTOP"), ElementsAre(allDesktops));
  screen_.ask(screen_.root(), "_NET_CURRENT_DESKTOP", {2, 0});
  screen_.await("the other workspace", [&] {
    return screen_.property(screen_.root(), "_NET_CURRENT_DESKTOP") == XClient::Values{2};
  });
  EXPECT_TRUE(screen_.isShown(strip_));
}

TEST_F(X11Panel, stripReservesItsPartOfTheEdge) {
  startBoth();
  const QRect place = screen_.place(strip_);
  EXPECT_EQ(place.topRight(), QPoint(1023, 0));
  EXPECT_THAT(screen_.property(strip_, "_NET_WM_STRUT_PARTIAL"),
              ElementsAre(0, 0, stripHeight, 0, 0, 0, 0, 0, place.left(), place.right(), 0, 0));
  EXPECT_THAT(screen_.property(strip_, "_NET_WM_STRUT"), ElementsAre(0, 0, stripHeight, 0));
}

TEST_F(X11Panel, maximisedWindowIsBelowStrip) {
  startBoth();
  const auto editor = screen_.open("Editor", {100, 100, 300, 200});
  screen_.ask(editor, "_NET_WM_STATE",
              {1, screen_.atom("_NET_WM_STATE_MAXIMIZED_VERT"),
               screen_.atom("_NET_WM_STATE_MAXIMIZED_HORZ"), 2});
  screen_.await("the maximised window", [&] { return screen_.place(editor).width() > 1000; });
  EXPECT_GE(screen_.place(editor).top(), stripHeight);
  EXPECT_EQ(screen_.place(strip_).top(), 0) << "the strip does not give way to its own strut";
}

TEST_F(X11Panel, stripStaysWhileDesktopIsShown) {
  startBoth();
  const auto editor = screen_.open("Editor", {100, 100, 300, 200});
  screen_.ask(screen_.root(), "_NET_SHOWING_DESKTOP", {1});
  screen_.await("the desktop", [&] { return !screen_.isShown(editor); });
  EXPECT_TRUE(screen_.isShown(strip_));
}

TEST_F(X11Panel, stripIsBelowOtherPanels) {
  startWindowManager();
  const auto upper = screen_.openPanel("Upper", {0, 0, 1024, 30});
  startProgram();
  EXPECT_EQ(screen_.place(strip_).topRight(), QPoint(1023, 30));
  EXPECT_EQ(screen_.property(strip_, "_NET_WM_STRUT_PARTIAL").at(2), 30U + stripHeight);
  screen_.close(upper);
  awaitTop(strip_, 0);
  screen_.openPanel("Upper", {0, 0, 1024, stripHeight});
  awaitTop(strip_, stripHeight);
}

TEST_F(X11Panel, stripThatIsShownAgainIsStillPanel) {
  startBoth();
  screen_.askToClose(strip_);
  screen_.await("the end of the strip", [&] { return !screen_.isListed(strip_); });
  strip_ = screen_.await("Driftmark");
  EXPECT_EQ(screen_.place(strip_).topRight(), QPoint(1023, 0));
  EXPECT_EQ(screen_.firstAtom(strip_, "_NET_WM_WINDOW_TYPE"), "_NET_WM_WINDOW_TYPE_DOCK");
  EXPECT_THAT(screen_.property(strip_, "_NET_WM_DESKTOP"), ElementsAre(allDesktops));
  EXPECT_THAT(screen_.property(strip_, "_NET_WM_STRUT"), ElementsAre(0, 0, stripHeight, 0));
}

TEST_F(X11Panel, startedStripLeavesFocus) {
  startWindowManager();
  const auto editor = screen_.open("Editor", {100, 100, 300, 200});
  startProgram();
  expectKeysReach(editor);
}

TEST_F(X11Panel, closedMenuLeavesFocusToUsersWindow) {
  startBoth();
  const auto editor = screen_.open("Editor", {100, 100, 300, 200});
  clickOnStrip();
  driver_->awaitMenu();
  use({"key", "Escape"});
  awaitNoMenu();
  awaitFocus(editor);
  expectKeysReach(editor);
}

TEST_F(X11Panel, clicksOnStripLeaveFocusToUsersWindow) {
  startBoth();
  const auto editor = screen_.open("Editor", {100, 100, 300, 200});
  clickOnStrip();
  driver_->awaitMenu();
  clickOnStrip();
  awaitNoMenu();
  expectKeysReach(editor);
}

TEST_F(X11Panel, closedAlertGivesFocusBackToUsersWindow) {
  startBoth();
  const auto editor = screen_.open("Editor", {100, 100, 300, 200});
  clickOnStrip();
  driver_->awaitMenu();
  use({"key", "Down", "Down", "Return"});
  const auto panel = screen_.await("Free Up Space");
  awaitFocus(panel);
  use({"key", "Return"});
  awaitAlert(*driver_, "Nothing to Free in iCloud Drive");
  screen_.await("the focus of the alert", [&] {
    const auto focus = screen_.focus();
    return screen_.isListed(focus) && focus != editor && focus != panel && focus != strip_;
  });
  use({"key", "Return"});
  awaitFocus(editor);
  expectKeysReach(editor);
}

TEST_F(X11Panel, keyboardReachesStripAndReturns) {
  startBoth();
  const auto editor = screen_.open("Editor", {100, 100, 300, 200});
  screen_.ask(strip_, "_NET_ACTIVE_WINDOW", {2, 0, editor});
  awaitFocus(strip_);
  use({"key", "space"});
  driver_->awaitMenu();
  use({"key", "Escape"});
  awaitNoMenu();
  awaitFocus(editor);
  expectKeysReach(editor);
  screen_.ask(strip_, "_NET_ACTIVE_WINDOW", {2, 0, editor});
  awaitFocus(strip_);
  use({"key", "Escape"});
  awaitFocus(editor);
}

} // namespace
} // namespace driftmark::test
