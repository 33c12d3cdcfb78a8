// How the menu of the status item looks and reacts.

#include "Input.h"
#include "Items.h"
#include "Themes.h"
#include "harness/qt/EventLoop.h"
#include "platform/linux/menubar/ElidedText.h"
#include "platform/linux/menubar/LinuxStatusItem.h"
#include "platform/linux/menubar/MenuStyle.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include <QAction>
#include <QApplication>
#include <QHelpEvent>
#include <QImage>
#include <QPixmapCache>
#include <QScreen>
#include <QTextDocument>
#include <QToolTip>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using testing::ElementsAre;

constexpr MenuItem::Tag storage = 7;

// NOLINTNEXTLINE(misc-misleading-bidirectional): what such a text looks like is tested
constexpr const char* misleading = "\u202Etxt.exe";

class DropDownMenuTest : public testing::Test {
protected:
  MenuBarStrip& strip() { return item_.strip(); }
  DropDownMenu& menu() { return *item_.menu(); }
  const MenuRow& row(int index) { return menu().row(static_cast<std::size_t>(index)); }
  QAction& action(int index) { return *menu().actions().at(index); }

  /// Opens the menu with these items.
  void open(Menu items) {
    item_.setMenu([items = std::move(items)] { return items; }, [] {});
    strip().press();
    ASSERT_NE(item_.menu(), nullptr);
    ASSERT_TRUE(menu().isVisible());
  }

  static int screenWidth() { return QGuiApplication::primaryScreen()->availableGeometry().width(); }

  /// The complete title of each row; "-" for a separator.
  std::vector<std::string> titles() {
    std::vector<std::string> titles;
    for (const QAction* const row : menu().actions())
      titles.push_back(row->isSeparator() ? "-" : row->data().toString().toStdString());
    return titles;
  }

  /// The text that is drawn for a row with this title.
  std::string drawn(const std::string& title) {
    open({command(title)});
    std::string text = action(0).text().toStdString();
    menu().close();
    return text;
  }

  /// The text of the tool tip of a row.
  std::string toolTipOver(int index) {
    const QPoint position = menu().actionGeometry(&action(index)).center();
    QHelpEvent event(QEvent::ToolTip, position, menu().mapToGlobal(position));
    QCoreApplication::sendEvent(&menu(), &event);
    return QToolTip::text().toStdString();
  }

  LinuxStatusItem item_;
};

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

TEST_F(DropDownMenuTest, titlesAreKeptAndDrawnSafely) {
  const std::vector<std::string> hard{"R&D && more",
                                      "&File",
                                      "  two  spaces  ",
                                      "tab\tin it",
                                      "line\nbreak",
                                      "<b>bold</b> &amp;",
                                      "\x01\x1b[31m",
                                      "שלום  —  5 s",
                                      misleading,
                                      "👩‍🚀 e\u0301",
                                      "",
                                      std::string("nul\0x", 5)};
  Menu items;
  for (const std::string& title : hard)
    items.push_back(command(title));
  open(std::move(items));
  EXPECT_EQ(titles(), hard);
  for (const QAction* const row : menu().actions()) {
    EXPECT_TRUE(QKeySequence::mnemonic(row->text()).isEmpty()) << row->text().toStdString();
    for (const char32_t character : row->text().toUcs4())
      EXPECT_TRUE(QChar::isPrint(character) || QChar::category(character) == QChar::Other_Format)
          << row->text().toStdString();
  }
  EXPECT_EQ(action(1).text(), "&&File");
  EXPECT_EQ(action(2).text(), "  two  spaces  ");
  EXPECT_EQ(action(5).text(), "<b>bold</b> &&amp;");
}

TEST_F(DropDownMenuTest, controlCharactersAreDrawnAsPictures) {
  const QFontMetricsF metrics(QGuiApplication::font());
  const std::string tab = metrics.inFontUcs4(0x2409) ? "␉" : "\uFFFD";
  const std::string newline = metrics.inFontUcs4(0x240A) ? "␊" : "\uFFFD";
  EXPECT_EQ(drawn("a\tb\nc"), "a" + tab + "b" + newline + "c");
  EXPECT_EQ(drawn(misleading), "\uFFFDtxt.exe");
}

TEST_F(DropDownMenuTest, rightToLeftNamesAreIsolated) {
  EXPECT_EQ(drawn("שלום עולם  —  5 minutes ago"), "\u200E\u2067שלום עולם\u2069  —  5 minutes ago");
  EXPECT_EQ(drawn("a שלום b שָׁלוֹם (2)"), "\u200Ea \u2067שלום\u2069 b \u2067שָׁלוֹם\u2069 (2)");
  EXPECT_EQ(drawn("naïve – “Zürich”"), "naïve – “Zürich”");
}

TEST_F(DropDownMenuTest, longTitleIsElidedInMiddleAndCompleteInToolTip) {
  std::string title = "Begin";
  for (int word = 0; word < 40; ++word)
    title += " word";
  title += " end";
  MenuItem item = command(title);
  item.toolTip = "/Users/ada/file";
  open({item, command("short")});
  const std::string text = action(0).text().toStdString();
  EXPECT_THAT(text, testing::StartsWith("Begin"));
  EXPECT_THAT(text, testing::HasSubstr("…"));
  EXPECT_THAT(text, testing::EndsWith("end"));
  EXPECT_LE(menu().width(), 440);
  std::string shown = toolTipOver(0);
  EXPECT_THAT(shown, testing::EndsWith("\n/Users/ada/file"));
  std::erase(shown, '\n');
  EXPECT_EQ(shown, title + "/Users/ada/file");
  EXPECT_EQ(titles().front(), title);
}

TEST_F(DropDownMenuTest, onlyNameIsShortened) {
  const std::string name = "Begin  —  " + std::string(200, 'w') + "  —  end.mov";
  open({file(name, "arrow.down.circle", "downloading 91%"),
        file(name, "exclamationmark.circle", "stalled · downloading 100%"),
        file("short.txt", "arrow.up.circle", "uploading")});
  EXPECT_THAT(action(0).text().toStdString(), testing::StartsWith("Begin"));
  EXPECT_THAT(action(0).text().toStdString(), testing::EndsWith(".mov  —  downloading 91%"));
  EXPECT_THAT(action(1).text().toStdString(),
              testing::EndsWith(".mov  —  stalled · downloading 100%"));
  EXPECT_EQ(action(2).text().toStdString(), "short.txt  —  uploading");
  EXPECT_FALSE(row(2).isElided());
  EXPECT_LE(menu().width(), 440);
  EXPECT_GE(menu().width(), std::min(440, screenWidth()) - 20);
  EXPECT_THAT(toolTipOver(0), testing::HasSubstr("Begin"));
}

TEST_F(DropDownMenuTest, longDetailWidensMenuOnScreen) {
  const std::string issue = "The item could not be uploaded because of its name, as it is.";
  open({file(std::string(200, 'w'), "exclamationmark.triangle", issue)});
  EXPECT_THAT(action(0).text().toStdString(), testing::StartsWith("ww"));
  EXPECT_LE(menu().width(), screenWidth());
  EXPECT_EQ(action(0).text().toStdString().ends_with("  —  " + issue), screenWidth() >= 600);
  EXPECT_EQ(menu().width() > 440, screenWidth() >= 600);
  EXPECT_GT(menu().width(), std::min(440, screenWidth()) - 20);
}

TEST_F(DropDownMenuTest, sizesFollowFontAndScreen) {
  const Menu items{label("A"), file(std::string(300, 'w'), "arrow.up.circle", "uploading 5%")};
  for (const int font : {13, 20, 40}) {
    const FontOfSize size(font);
    open(items);
    const int widest = std::min(static_cast<int>(std::lround(440 * font / 13.0)), screenWidth());
    EXPECT_LE(menu().width(), widest) << font;
    EXPECT_GT(menu().width(), widest - 3 * font) << font;
    EXPECT_NEAR(menu().actionGeometry(&action(0)).height(), 24 * font / 13.0, 0.5) << font;
    menu().close();
  }
}

TEST_F(DropDownMenuTest, narrowMenuKeepsMinWidth) {
  open({command("A")});
  EXPECT_EQ(menu().width(), 220);
}

TEST_F(DropDownMenuTest, headingIsSmallAndBold) {
  open({heading("Recent Activity"), command("Row")});
  const QFont small = MenuStyle::fontOf(row(0), menu().font());
  EXPECT_EQ(small.pixelSize(), 11);
  EXPECT_TRUE(small.bold());
  EXPECT_EQ(MenuStyle::fontOf(row(1), menu().font()), menu().font());
  EXPECT_FALSE(action(0).isEnabled());
}

TEST_F(DropDownMenuTest, cornersAreRoundWhereWindowsBlend) {
  open({command("Row")});
  const QImage image = menu().grab().toImage();
  EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
  EXPECT_EQ(qAlpha(image.pixel(image.width() - 1, image.height() - 1)), 0);
  EXPECT_EQ(qAlpha(image.pixel(0, image.height() / 2)), 255);
}

TEST_F(DropDownMenuTest, rowsAreMirroredFromRightToLeft) {
  MenuItem quit = command("Quit…");
  quit.keyEquivalent = "q";
  const Menu items{file("Café.txt", "arrow.up.circle", "uploading 42%"), quit};
  const auto picture = [&](int index) {
    open(items);
    const QRect place = menu().actionGeometry(&action(index));
    const QImage image = menu().grab(place).toImage();
    menu().close();
    return image;
  };
  /// The columns with ink.
  const auto columns = [](const QImage& image) {
    std::vector<int> inked;
    for (int x = 0; x < image.width(); ++x)
      for (int y = 0; y < image.height(); ++y)
        if (image.pixel(x, y) != image.pixel(0, 0)) {
          inked.push_back(x);
          break;
        }
    return inked;
  };
  const QImage left = picture(0);
  const QImage leftShortcut = picture(1);
  QApplication::setLayoutDirection(Qt::RightToLeft);
  const QImage right = picture(0);
  const QImage rightShortcut = picture(1);
  QApplication::setLayoutDirection(Qt::LeftToRight);

  const int unit = static_cast<int>(left.devicePixelRatio());
  EXPECT_NEAR(columns(left).front(), 9 * unit, unit);
  EXPECT_NEAR(columns(right).back(), right.width() - 10 * unit, unit) << "the symbol";
  EXPECT_NEAR(columns(leftShortcut).back(), leftShortcut.width() - 9 * unit, 2 * unit);
  EXPECT_NEAR(columns(rightShortcut).front(), 9 * unit, 2 * unit) << "the shortcut";

  // The text itself is English, and reads from left to right.
  const int width = static_cast<int>(std::ceil(row(0).width()));
  const QRect atLeft(32 * unit, 0, width * unit, left.height());
  const QRect atRight(right.width() - (32 + width) * unit, 0, width * unit, right.height());
  EXPECT_EQ(left.copy(atLeft), right.copy(atRight));
}

TEST_F(DropDownMenuTest, titleOfMillionCharactersIsFast) {
  const auto start = std::chrono::steady_clock::now();
  MenuItem item = command(std::string(1'000'000, 'w'));
  item.toolTip = item.title;
  open({item});
  EXPECT_LE(menu().width(), 440);
  EXPECT_LT(toolTipOver(0).size(), 10'000U);
  EXPECT_FALSE(menu().grab().isNull());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(DropDownMenuTest, toolTipsAreNeverMarkup) {
  MenuItem item = command("file");
  for (const char* const path : {"/a/<b>bold</b>", "a &lt;b", "<!doctype html>", "<br>"}) {
    item.toolTip = path;
    open({item});
    const std::string shown = toolTipOver(0);
    EXPECT_FALSE(Qt::mightBeRichText(QString::fromStdString(shown))) << shown;
    EXPECT_EQ(QString::fromStdString(shown).remove(QChar(0x2060)), path);
    menu().close();
  }
  const QString shown = plainToolTip({QStringLiteral("line\nbreak")});
  EXPECT_FALSE(shown.contains(u'\n'));
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
