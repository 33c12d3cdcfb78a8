// How the status item looks and reacts in the menu bar.

#include "Input.h"
#include "Items.h"
#include "Themes.h"
#include "harness/qt/EventLoop.h"
#include "platform/linux/menubar/LinuxStatusItem.h"

#include <optional>
#include <set>
#include <string>
#include <tuple>

#include <QAccessible>
#include <QApplication>
#include <QImage>
#include <QScreen>
#include <QTimer>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

/// Handles all pending drawing.
void settle() {
  QCoreApplication::sendPostedEvents();
  QCoreApplication::processEvents();
}

class StatusItemTest : public testing::Test {
protected:
  void SetUp() override {
    item_.setSymbol({"icloud", "iCloud Drive: idle"}, "icloud");
    ASSERT_TRUE(runUntil([this] { return strip().paintCount() > 0; }));
    strip().clearFocus(); // this platform gives it to any window
    settle();
  }

  MenuBarStrip& strip() { return item_.strip(); }
  QImage picture() { return strip().grab().toImage(); }
  int widthWith(const std::string& title) {
    item_.setTitle(title);
    return strip().width();
  }

  /// How often `change` causes the strip to be drawn.
  template <class Change> int paintsFor(const Change& change) {
    const int before = strip().paintCount();
    change();
    settle();
    return strip().paintCount() - before;
  }

  LinuxStatusItem item_;
};

TEST_F(StatusItemTest, stripIsAtTopRightWithoutFocus) {
  const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  for (const char* const title : {"", "42%", ""}) {
    item_.setTitle(title);
    EXPECT_TRUE(strip().isVisible());
    EXPECT_EQ(strip().geometry().topRight(), screen.topRight());
    EXPECT_EQ(strip().height(), 24);
  }
  EXPECT_TRUE(strip().testAttribute(Qt::WA_ShowWithoutActivating));
}

TEST_F(StatusItemTest, widthIsSameForAllPercentages) {
  const int narrow = widthWith("");
  const int usual = widthWith("9%");
  EXPECT_GT(usual, narrow);
  for (const char* const title : {"0%", "11%", "42%", "88%", "100%"})
    EXPECT_EQ(widthWith(title), usual) << title;
  EXPECT_EQ(widthWith(""), narrow);
}

TEST_F(StatusItemTest, unchangedValuesCauseNoDrawing) {
  item_.setTitle("42%");
  item_.setToolTip("iCloud Drive: uploading 42%");
  settle();
  EXPECT_EQ(paintsFor([this] {
              item_.setSymbol({"icloud", "iCloud Drive: idle"}, "icloud");
              item_.setTitle("42%");
              item_.setToolTip("iCloud Drive: uploading 42%");
            }),
            0);
  EXPECT_EQ(paintsFor([this] { item_.setSymbol({"icloud", "another"}, "icloud"); }), 0);
  EXPECT_EQ(paintsFor([this] { item_.setToolTip("another"); }), 0);
  EXPECT_GT(paintsFor([this] { item_.setTitle("43%"); }), 0);
  EXPECT_GT(paintsFor([this] { item_.setSymbol({"icloud.slash", ""}, "icloud"); }), 0);
}

TEST_F(StatusItemTest, stripFollowsTheme) {
  item_.setTitle("42%");
  for (const auto& [desktop, ink, paper] :
       {std::tuple(QColor(45, 45, 48), QColor("#f2f2f4"), QColor("#2a2a2d")),
        std::tuple(QColor(239, 239, 239), QColor("#1d1d1f"), QColor("#f6f6f7"))}) {
    std::optional<Theme> theme;
    EXPECT_GT(paintsFor([&theme, &desktop = desktop] { theme.emplace(QPalette(desktop)); }), 0);
    const QImage image = picture();
    const int half = image.width() / 2;
    std::set<QRgb> left;
    std::set<QRgb> right;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x)
        (x < half ? left : right).insert(image.pixel(x, y));
    EXPECT_TRUE(left.contains(ink.rgb())) << ink.name().toStdString();
    EXPECT_TRUE(left.contains(paper.rgb()) && right.contains(paper.rgb()));
    EXPECT_GT(right.size(), 3U) << "no title";
  }
}

TEST_F(StatusItemTest, changeOfThemeIsFollowed) {
  QApplication::setPalette(QPalette(Qt::green));
  QEvent change(QEvent::ThemeChange);
  QCoreApplication::sendEvent(&strip(), &change);
  EXPECT_EQ(strip().palette().color(QPalette::Window), QColor("#f6f6f7"));
}

TEST_F(StatusItemTest, symbolAndTitleGrowWithFont) {
  const int usual = widthWith("42%");
  const FontOfSize font(26);
  settle();
  EXPECT_EQ(strip().height(), 48);
  EXPECT_EQ(strip().font().pixelSize(), 22);
  EXPECT_GE(strip().width(), 2 * usual - 4);
}

TEST_F(StatusItemTest, contentsKeepDistanceFromEdges) {
  for (const char* const title : {"", "100%", "A longer title"}) {
    item_.setTitle(title);
    const QImage image = picture();
    const int unit = static_cast<int>(strip().devicePixelRatioF());
    // Without the hairlines on the left and at the bottom.
    const QRect bar = image.rect().adjusted(unit, 0, 0, -unit);
    const QRect content = bar.adjusted(4 * unit, unit, -4 * unit, -unit);
    const QRgb paper = strip().palette().color(QPalette::Window).rgb();
    int strays = 0;
    for (int y = bar.top(); y <= bar.bottom(); ++y)
      for (int x = bar.left(); x <= bar.right(); ++x)
        strays += !content.contains(x, y) && image.pixel(x, y) != paper ? 1 : 0;
    EXPECT_EQ(strays, 0) << title;
  }
}

TEST_F(StatusItemTest, unknownSymbolIsReplacedByFallback) {
  const QImage idle = picture();
  item_.setSymbol({"no.such.symbol", "idle"}, "icloud");
  EXPECT_EQ(picture(), idle);
  EXPECT_EQ(strip().accessibleName(), "idle");
  item_.setSymbol({"no.such.symbol", "idle"}, "nor.this");
  const QImage bare = picture();
  EXPECT_NE(bare, idle);
  item_.setSymbol({"icloud", "idle"}, "icloud");
  EXPECT_EQ(picture(), idle);
}

TEST_F(StatusItemTest, veryLongTitleIsShortened) {
  const int width = widthWith(std::string(1'000'000, '7'));
  EXPECT_LE(width, 320);
  EXPECT_FALSE(picture().isNull());
  EXPECT_EQ(widthWith("line\nbreak"), widthWith("line\tbreak"));
}

TEST_F(StatusItemTest, screenReaderFindsMenuButton) {
  item_.setToolTip("iCloud Drive: uploading 42%");
  item_.setSymbol({"icloud.and.arrow.up", "iCloud Drive: uploading 42%"}, "icloud");
  item_.setMenu([] { return Menu{label("Headline")}; }, [] {});
  QAccessibleInterface* const accessible = QAccessible::queryAccessibleInterface(&strip());
  ASSERT_NE(accessible, nullptr);
  EXPECT_EQ(accessible->role(), QAccessible::ButtonMenu);
  EXPECT_EQ(accessible->text(QAccessible::Name), "iCloud Drive: uploading 42%");
  EXPECT_TRUE(accessible->state().hasPopup);
  ASSERT_NE(accessible->actionInterface(), nullptr);
  accessible->actionInterface()->doAction(QAccessibleActionInterface::showMenuAction());
  ASSERT_NE(item_.menu(), nullptr);
  EXPECT_TRUE(item_.menu()->isVisible());
  EXPECT_TRUE(accessible->state().expanded);
}

TEST_F(StatusItemTest, keysOpenMenuOfFocusedStrip) {
  item_.setMenu([] { return Menu{label("Headline")}; }, [] {});
  const QImage before = picture();
  strip().activateWindow();
  strip().setFocus(Qt::TabFocusReason);
  ASSERT_TRUE(runUntil([this] { return strip().hasFocus(); }));
  EXPECT_NE(picture(), before) << "the focus is invisible";
  for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter, Qt::Key_Down}) {
    pressKey(strip(), key);
    ASSERT_NE(item_.menu(), nullptr) << key;
    EXPECT_TRUE(item_.menu()->isVisible()) << key;
    pressKey(*item_.menu(), Qt::Key_Escape);
    EXPECT_FALSE(item_.menu()->isVisible()) << key;
  }
}

TEST_F(StatusItemTest, closedStripIsShownAgain) {
  strip().close();
  EXPECT_FALSE(strip().isVisible());
  EXPECT_TRUE(runUntil([this] { return strip().isVisible(); }));
}

TEST_F(StatusItemTest, stripDoesNotPreventQuitting) {
  bool late = false;
  QTimer::singleShot(0, [] { QCoreApplication::quit(); });
  QTimer::singleShot(60'000, &strip(), [&late] {
    late = true;
    QCoreApplication::exit();
  });
  QCoreApplication::exec();
  EXPECT_FALSE(late);
}

} // namespace
} // namespace driftmark::test
