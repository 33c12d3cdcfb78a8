// How the menu of the status item opens and reacts.

#include "DropDownMenuTest.h"
#include "Input.h"
#include "harness/qt/EventLoop.h"

#include <memory>
#include <string>
#include <utility>

#include <QPixmapCache>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using testing::ElementsAre;

constexpr MenuItem::Tag storage = 7;

TEST_F(DropDownMenuTest, rowsAreItemsInOrder) {
  MenuItem file = command("Report.pdf  —  uploading 42%");
  file.symbol = {"arrow.up.circle", "uploading 42%"};
  file.toolTip = "/Users/ada/Report.pdf";
  MenuItem login = command("Launch at Login");
  login.isChecked = true;
  MenuItem quit = command("Quit Driftmark");
  quit.keyEquivalent = "q";
  MenuItem odd = command("Odd");
  odd.symbol = {"no.such.symbol", ""};
  open({label("iCloud Drive: Uploading…"), separator(), file, login, quit, odd,
        command("Free Up Space…", nullptr), label("")});

  EXPECT_THAT(titles(),
              ElementsAre("iCloud Drive: Uploading…", "-", "Report.pdf  —  uploading 42%",
                          "Launch at Login", "Quit Driftmark", "Odd", "Free Up Space…", ""));
  for (int index = 0; index < 8; ++index) {
    EXPECT_EQ(action(index).isEnabled(), index >= 1 && index <= 5) << index;
    EXPECT_EQ(action(index).isChecked(), index == 3) << index;
    EXPECT_EQ(row(index).symbol(), index == 2   ? "arrow.up.circle"
                                   : index == 3 ? "checkmark"
                                                : "")
        << index;
    EXPECT_EQ(action(index).shortcut().toString(), index == 4 ? "Ctrl+Q" : "") << index;
    EXPECT_EQ(action(index).text(), action(index).data().toString()) << index;
  }
  EXPECT_EQ(action(2).toolTip(), "/Users/ada/Report.pdf");
  EXPECT_EQ(toolTipOver(3), "");
  EXPECT_EQ(toolTipOver(2), "/Users/ada/Report.pdf");
}

TEST_F(DropDownMenuTest, menuIsBuiltAtEachOpeningBeforeWillOpen) {
  std::string order;
  item_.setMenu(
      [&order] {
        order += "build ";
        return Menu{label("Headline")};
      },
      [&order] { order += "open "; });
  EXPECT_EQ(order, "");
  click(strip(), {5, 5});
  EXPECT_EQ(order, "build open ");
  EXPECT_TRUE(menu().isVisible());
  EXPECT_TRUE(strip().isHighlighted());
  strip().press();
  EXPECT_FALSE(menu().isVisible());
  EXPECT_FALSE(strip().isHighlighted());
  EXPECT_EQ(order, "build open ");
  click(strip(), {5, 5});
  EXPECT_EQ(order, "build open build open ");
}

TEST_F(DropDownMenuTest, clickOutsideClosesMenuAndIsForwardedExceptToStrip) {
  for (const bool onStrip : {false, true}) {
    open({label("Headline")});
    bool isReplayed = false;
    QObject::connect(&menu(), &QMenu::aboutToHide, &menu(),
                     [&] { isReplayed = !menu().testAttribute(Qt::WA_NoMouseReplay); });
    const QPoint position = onStrip ? strip().mapToGlobal(QPoint(5, 5)) : QPoint(5, 200);
    click(menu(), menu().mapFromGlobal(position));
    EXPECT_FALSE(menu().isVisible());
    EXPECT_EQ(isReplayed, !onStrip);
  }
}

TEST_F(DropDownMenuTest, stripWithoutMenuOpensNothing) {
  strip().press();
  EXPECT_EQ(item_.menu(), nullptr);
  EXPECT_FALSE(strip().isHighlighted());
}

TEST_F(DropDownMenuTest, menuOpensBelowStripInsideScreen) {
  item_.setTitle("42%");
  const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  open({label("Headline"), command(std::string(500, 'w'))});
  EXPECT_EQ(menu().geometry().top(), strip().geometry().bottom() + 1);
  EXPECT_EQ(menu().geometry().right(), screen.right());
  EXPECT_TRUE(screen.contains(menu().geometry()));
  EXPECT_LE(menu().width(), 440);
}

TEST_F(DropDownMenuTest, menuHigherThanScreenScrolls) {
  Menu items;
  for (int row = 0; row < 100; ++row)
    items.push_back(command("Row " + std::to_string(row), [] {}));
  const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  open(std::move(items));
  EXPECT_TRUE(screen.contains(menu().geometry()));
  EXPECT_EQ(menu().geometry().top(), strip().geometry().bottom() + 1);
  EXPECT_EQ(menu().geometry().right(), screen.right());
  const auto isInView = [this](int index) {
    return menu().rect().contains(menu().actionGeometry(&action(index)));
  };
  for (const auto& [key, row] : {std::pair(Qt::Key_Up, 99), std::pair(Qt::Key_Down, 0),
                                 std::pair(Qt::Key_End, 99), std::pair(Qt::Key_Home, 0)}) {
    pressKey(menu(), key);
    EXPECT_EQ(menu().activeAction(), &action(row)) << key;
    EXPECT_TRUE(isInView(row)) << key;
    EXPECT_FALSE(isInView(99 - row)) << key;
  }
}

TEST_F(DropDownMenuTest, openMenuIsRetitled) {
  open({label("Headline"), label("Checking iCloud storage…", storage), command("Last")});
  const QRect before = menu().geometry();
  item_.retitle(storage, "1234567.89 TB available in iCloud");
  EXPECT_EQ(action(1).text(), "1234567.89 TB available in iCloud");
  EXPECT_EQ(titles()[1], "1234567.89 TB available in iCloud");
  EXPECT_GT(menu().width(), before.width());
  EXPECT_EQ(menu().geometry().topRight(), before.topRight());
  EXPECT_EQ(menu().height(), before.height());
}

TEST_F(DropDownMenuTest, retitlingWithoutEffectChangesNothing) {
  item_.retitle(storage, "nothing was built");
  open({label("Headline"), label("Storage", storage)});
  int changes = 0;
  QObject::connect(&action(1), &QAction::changed, &action(1), [&changes] { ++changes; });
  item_.retitle(storage, "Storage");
  item_.retitle(0, "no tag");
  item_.retitle(storage + 1, "no such tag");
  EXPECT_EQ(changes, 0);
  EXPECT_THAT(titles(), ElementsAre("Headline", "Storage"));
  item_.retitle(storage, "Other");
  EXPECT_GT(changes, 0);
}

/// The style keeps an image of an arrow for every size and every palette.
TEST_F(DropDownMenuTest, imagesOfScrollingMenusDoNotAccumulate) {
  constexpr int kibibytes = 20;
  const int limitBefore = QPixmapCache::cacheLimit();
  QPixmapCache::setCacheLimit(kibibytes);
  const QPixmapCache::Key oldest = QPixmapCache::insert(QPixmap(16, 16));
  std::string title = "Row";
  for (int opening = 0; opening < 40; ++opening) {
    title += "m";
    open(Menu(200, command(title)));
    EXPECT_FALSE(menu().grab().isNull());
    menu().close();
  }
  EXPECT_TRUE(oldest.isValid());
  QPixmapCache::setCacheLimit(limitBefore);
}

TEST_F(DropDownMenuTest, retitledScrollingMenuStaysOnScreen) {
  Menu items{label("Storage", storage)};
  for (int row = 0; row < 100; ++row)
    items.push_back(command("Row " + std::to_string(row)));
  open(std::move(items));
  const int height = menu().height();
  item_.retitle(storage, "Storage that is left in iCloud at this moment");
  EXPECT_EQ(menu().height(), height);
  EXPECT_TRUE(QGuiApplication::primaryScreen()->availableGeometry().contains(menu().geometry()));
}

TEST_F(DropDownMenuTest, actionRunsFromEventLoopAfterMenuHasClosed) {
  bool ran = false;
  bool wasOpen = true;
  open({label("Headline"), command("Do", [&] {
          ran = true;
          wasOpen = menu().isVisible();
        })});
  click(menu(), menu().actionGeometry(&action(1)).center());
  EXPECT_FALSE(ran);
  EXPECT_FALSE(menu().isVisible());
  ASSERT_TRUE(runUntil([&] { return ran; }));
  EXPECT_FALSE(wasOpen);
}

TEST_F(DropDownMenuTest, actionOfDestroyedMenuDoesNotRun) {
  int first = 0;
  int second = 0;
  open({command("Do", [&first] { ++first; })});
  pressKey(menu(), Qt::Key_Down);
  pressKey(menu(), Qt::Key_Return);
  open({command("Do", [&second] { ++second; })});
  pressKey(menu(), Qt::Key_Down);
  pressKey(menu(), Qt::Key_Return);
  ASSERT_TRUE(runUntil([&second] { return second == 1; }));
  EXPECT_EQ(first, 0);
}

TEST_F(DropDownMenuTest, actionMayOpenMenuAgain) {
  bool ran = false;
  open({command("Do", [&] {
    strip().press();
    ran = menu().isVisible();
  })});
  click(menu(), menu().actionGeometry(&action(0)).center());
  EXPECT_TRUE(runUntil([&ran] { return ran; }));
}

TEST_F(DropDownMenuTest, labelsCannotBeChosen) {
  open({label("Headline"), command("Do", nullptr), command("Other")});
  click(menu(), menu().actionGeometry(&action(0)).center());
  EXPECT_TRUE(menu().isVisible());
  pressKey(menu(), Qt::Key_Down);
  EXPECT_EQ(menu().activeAction(), &action(2));
}

TEST_F(DropDownMenuTest, shortcutsWorkOnlyWhileMenuIsOpen) {
  std::string chosen;
  MenuItem drive = command("Open iCloud Drive", [&chosen] { chosen += 'o'; });
  drive.keyEquivalent = "o";
  MenuItem off = command("Off", nullptr);
  off.keyEquivalent = "x";
  MenuItem quit = command("Quit", [&chosen] { chosen += 'q'; });
  quit.keyEquivalent = "q";
  open({drive, off, quit});
  pressKey(menu(), Qt::Key_O);
  pressKey(menu(), Qt::Key_O, Qt::ControlModifier | Qt::ShiftModifier);
  pressKey(menu(), Qt::Key_X, Qt::ControlModifier);
  EXPECT_TRUE(menu().isVisible());
  pressKey(menu(), Qt::Key_O, Qt::ControlModifier);
  EXPECT_FALSE(menu().isVisible());
  pressKey(strip(), Qt::Key_Q, Qt::ControlModifier);
  ASSERT_TRUE(runUntil([&chosen] { return !chosen.empty(); }));
  QCoreApplication::processEvents();
  EXPECT_EQ(chosen, "o");
}

TEST_F(DropDownMenuTest, itemMayBeDestroyedWhileMenuIsOpen) {
  auto item = std::make_unique<LinuxStatusItem>();
  bool ran = false;
  item->setMenu([&ran] { return Menu{command("Do", [&ran] { ran = true; })}; }, [] {});
  item->strip().press();
  item->menu()->actions().front()->trigger();
  item.reset();
  QCoreApplication::processEvents();
  EXPECT_FALSE(ran);
}

} // namespace
} // namespace driftmark::test
