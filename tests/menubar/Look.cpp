// Which palette, font and lengths a desktop gives.

#include "platform/linux/looks/Look.h"

#include "Themes.h"

#include <QApplication>
#include <QStyle>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

QColor ground(const QColor& desktop) {
  return Look::paletteFor(QPalette(desktop)).color(QPalette::Window);
}

TEST(Look, desktopDecidesBetweenLightAndDark) {
  EXPECT_EQ(ground(QColor(239, 239, 239)), QColor("#f6f6f7"));
  EXPECT_EQ(ground(QColor(200, 210, 220)), QColor("#f6f6f7"));
  EXPECT_EQ(ground(QColor(45, 45, 48)), QColor("#2a2a2d"));
}

TEST(Look, paletteOfHighContrastIsKept) {
  for (const auto& [paper, ink] :
       {std::pair(Qt::black, Qt::white), std::pair(Qt::white, Qt::black)}) {
    const QPalette palette = themeOfHighContrast(paper, ink);
    EXPECT_EQ(Look::paletteFor(palette), palette);
  }
}

TEST(Look, ownPaletteIsKept) {
  for (const QColor& desktop : {QColor(239, 239, 239), QColor(45, 45, 48)}) {
    const QPalette palette = Look::paletteFor(QPalette(desktop));
    EXPECT_EQ(Look::paletteFor(palette), palette);
  }
}

TEST(Look, onlyUnnamedFontIsReplaced) {
  QFont font = Look::fontFor(QFont("Sans Serif", 9));
  EXPECT_EQ(font.families(), (QStringList{"Inter", "Sans Serif"}));
  EXPECT_EQ(font.pixelSize(), 13);
  font = Look::fontFor(QFont("Sans Serif", 14));
  EXPECT_EQ(font.families(), (QStringList{"Inter", "Sans Serif"}));
  EXPECT_EQ(font.pointSize(), 14);
  EXPECT_EQ(Look::fontFor(QFont("Cantarell", 9)), QFont("Cantarell", 9));
}

TEST(Look, lengthsGrowWithFontAndSymbolsDoNotShrink) {
  QFont font = QApplication::font();
  const auto look = [&font](int pixels) {
    font.setPixelSize(pixels);
    return Look({}, font);
  };
  EXPECT_EQ(look(13).length(24), 24);
  EXPECT_EQ(look(26).length(24), 48);
  EXPECT_EQ(look(26).symbolSize(), 32);
  EXPECT_EQ(look(10).symbolSize(), 16);
  EXPECT_EQ(look(10).length(0.1), 1);
  EXPECT_EQ(look(26).font(11, QFont::Bold).pixelSize(), 22);
}

TEST(Look, buttonsHaveNoIcons) {
  EXPECT_EQ(QApplication::style()->styleHint(QStyle::SH_DialogButtonBox_ButtonsHaveIcons), 0);
}

} // namespace
} // namespace driftmark::test
