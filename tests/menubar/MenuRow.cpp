// What the rows of a menu show, and where.

#include "DropDownMenuTest.h"
#include "Themes.h"
#include "platform/linux/menubar/ElidedText.h"
#include "platform/linux/menubar/MenuStyle.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include <QApplication>
#include <QImage>
#include <QTextDocument>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

// NOLINTNEXTLINE(misc-misleading-bidirectional): what such a text looks like is tested
constexpr const char* misleading = "\u202Etxt.exe";

using MenuRowTest = DropDownMenuTest;

TEST_F(MenuRowTest, titlesAreKeptAndDrawnSafely) {
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

TEST_F(MenuRowTest, controlCharactersAreDrawnAsPictures) {
  const QFontMetricsF metrics(QGuiApplication::font());
  const std::string tab = metrics.inFontUcs4(0x2409) ? "␉" : "\uFFFD";
  const std::string newline = metrics.inFontUcs4(0x240A) ? "␊" : "\uFFFD";
  EXPECT_EQ(drawn("a\tb\nc"), "a" + tab + "b" + newline + "c");
  EXPECT_EQ(drawn(misleading), "\uFFFDtxt.exe");
}

TEST_F(MenuRowTest, rightToLeftNamesAreIsolated) {
  EXPECT_EQ(drawn("שלום עולם  —  5 minutes ago"), "\u200E\u2067שלום עולם\u2069  —  5 minutes ago");
  EXPECT_EQ(drawn("a שלום b שָׁלוֹם (2)"), "\u200Ea \u2067שלום\u2069 b \u2067שָׁלוֹם\u2069 (2)");
  EXPECT_EQ(drawn("naïve – “Zürich”"), "naïve – “Zürich”");
}

TEST_F(MenuRowTest, longTitleIsElidedInMiddleAndCompleteInToolTip) {
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

TEST_F(MenuRowTest, onlyNameIsShortened) {
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

TEST_F(MenuRowTest, longDetailWidensMenuOnScreen) {
  const std::string issue = "The item could not be uploaded because of its name, as it is.";
  open({file(std::string(200, 'w'), "exclamationmark.triangle", issue)});
  EXPECT_THAT(action(0).text().toStdString(), testing::StartsWith("ww"));
  EXPECT_LE(menu().width(), screenWidth());
  EXPECT_EQ(action(0).text().toStdString().ends_with("  —  " + issue), screenWidth() >= 600);
  EXPECT_EQ(menu().width() > 440, screenWidth() >= 600);
  EXPECT_GT(menu().width(), std::min(440, screenWidth()) - 20);
}

TEST_F(MenuRowTest, sizesFollowFontAndScreen) {
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

TEST_F(MenuRowTest, narrowMenuKeepsMinWidth) {
  open({command("A")});
  EXPECT_EQ(menu().width(), 220);
}

TEST_F(MenuRowTest, headingIsSmallAndBold) {
  open({heading("Recent Activity"), command("Row")});
  const QFont small = MenuStyle::fontOf(row(0), menu().font());
  EXPECT_EQ(small.pixelSize(), 11);
  EXPECT_TRUE(small.bold());
  EXPECT_EQ(MenuStyle::fontOf(row(1), menu().font()), menu().font());
  EXPECT_FALSE(action(0).isEnabled());
}

TEST_F(MenuRowTest, cornersAreRoundWhereWindowsBlend) {
  open({command("Row")});
  const QImage image = menu().grab().toImage();
  EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
  EXPECT_EQ(qAlpha(image.pixel(image.width() - 1, image.height() - 1)), 0);
  EXPECT_EQ(qAlpha(image.pixel(0, image.height() / 2)), 255);
}

TEST_F(MenuRowTest, rowsAreMirroredFromRightToLeft) {
  MenuItem quit = command("Quit…");
  quit.keyEquivalent = "q";
  const Menu items{file("Café.txt", "arrow.up.circle", "uploading 42%"), quit};
  const auto picture = [&](int index) {
    open(items);
    const QRect place = menu().actionGeometry(&action(index));
    QImage image = menu().grab(place).toImage();
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

TEST_F(MenuRowTest, titleOfMillionCharactersIsFast) {
  const auto start = std::chrono::steady_clock::now();
  MenuItem item = command(std::string(1'000'000, 'w'));
  item.toolTip = item.title;
  open({item});
  EXPECT_LE(menu().width(), 440);
  EXPECT_LT(toolTipOver(0).size(), 10'000U);
  EXPECT_FALSE(menu().grab().isNull());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(MenuRowTest, toolTipsAreNeverMarkup) {
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

} // namespace
} // namespace driftmark::test
