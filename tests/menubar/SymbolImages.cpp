#include "platform/linux/looks/SymbolImages.h"

#include <cstdlib>
#include <string>
#include <vector>

#include <QImage>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

class EverySymbol : public testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(SymbolImages, EverySymbol,
                         testing::Values("icloud", "icloud.and.arrow.up", "icloud.and.arrow.down",
                                         "arrow.triangle.2.circlepath.icloud",
                                         "arrow.clockwise.icloud", "exclamationmark.icloud",
                                         "icloud.slash", "folder", "arrow.up.circle",
                                         "arrow.down.circle", "exclamationmark.circle",
                                         "exclamationmark.triangle", "checkmark.circle",
                                         "checkmark", "chevron.up", "chevron.down"));

TEST_P(EverySymbol, symbolIsDrawnInGivenColourAndNotClipped) {
  constexpr int size = 16;
  constexpr int ratio = 4;
  SymbolImages images;
  ASSERT_TRUE(SymbolImages::has(GetParam()));
  const QPixmap pixmap = images.image(GetParam(), QColor(200, 40, 10), size, ratio);
  EXPECT_EQ(pixmap.size(), QSize(size * ratio, size * ratio));
  EXPECT_EQ(pixmap.deviceIndependentSize(), QSizeF(size, size));

  const QImage image = pixmap.toImage();
  const QRect inside = image.rect().adjusted(1, 1, -1, -1);
  int inked = 0;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) {
      const QColor pixel = image.pixelColor(x, y);
      if (pixel.alpha() == 0)
        continue;
      EXPECT_TRUE(inside.contains(x, y)) << x << ' ' << y;
      if (pixel.alpha() == 255) {
        ++inked;
        EXPECT_EQ(pixel, QColor(200, 40, 10)) << x << ' ' << y;
      }
    }
  EXPECT_GT(inked, size * ratio);
}

/// The symbols of the program's six states, on their grid.
std::vector<QImage> states() {
  SymbolImages images;
  std::vector<QImage> states;
  states.reserve(6);
  for (const char* const name :
       {"icloud", "icloud.and.arrow.up", "icloud.and.arrow.down",
        "arrow.triangle.2.circlepath.icloud", "arrow.clockwise.icloud", "exclamationmark.icloud"})
    states.push_back(images.image(name, Qt::black, 16, 1).toImage());
  return states;
}

TEST(SymbolImages, statesDifferClearly) {
  const std::vector<QImage> all = states();
  for (const QImage& one : all)
    for (const QImage& other : all) {
      int different = 0;
      for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x)
          different += std::abs(qAlpha(one.pixel(x, y)) - qAlpha(other.pixel(x, y))) > 128 ? 1 : 0;
      EXPECT_TRUE(&one == &other || different >= 12)
          << different << ' ' << &one - all.data() << ' ' << &other - all.data();
    }
}

TEST(SymbolImages, statesHaveSameCloud) {
  const std::vector<QImage> all = states();
  const QRect glyph(2, 3, 12, 9);
  for (const QImage& state : all)
    for (int y = 0; y < 16; ++y)
      for (int x = 0; x < 16; ++x)
        EXPECT_TRUE(glyph.contains(x, y) || state.pixel(x, y) == all.front().pixel(x, y))
            << x << ' ' << y;
}

TEST(SymbolImages, stemsAndEdgesFillWholePixels) {
  const auto alpha = [](const QImage& image, int x, int y) { return qAlpha(image.pixel(x, y)); };
  const QImage attention = states().back();
  for (int y = 3; y < 9; ++y) {
    for (const int x : {7, 8})
      EXPECT_EQ(alpha(attention, x, y), 0) << x << ' ' << y;
    for (const int x : {6, 9})
      EXPECT_EQ(alpha(attention, x, y), 255) << x << ' ' << y;
  }
  for (int x = 5; x < 12; ++x) {
    EXPECT_EQ(alpha(attention, x, 13), 255) << x;
    EXPECT_EQ(alpha(attention, x, 14), 0) << x;
  }
  SymbolImages images;
  for (const char* const name :
       {"arrow.up.circle", "arrow.down.circle", "exclamationmark.circle"}) {
    const QImage image = images.image(name, Qt::black, 16, 1).toImage();
    for (const int x : {7, 8})
      EXPECT_EQ(alpha(image, x, 7), 255) << name;
  }
}

TEST(SymbolImages, unknownNameHasNoImage) {
  SymbolImages images;
  for (const char* const name : {"", "cloud", "../icon", "icloud.svg"}) {
    EXPECT_FALSE(SymbolImages::has(name)) << name;
    EXPECT_TRUE(images.image(name, Qt::black, 16, 1).isNull()) << name;
  }
}

TEST(SymbolImages, imageIsDrawnOnce) {
  SymbolImages images;
  const auto key = [&images](const QColor& colour, int size, qreal ratio) {
    return images.image("icloud", colour, size, ratio).cacheKey();
  };
  const qint64 first = key(Qt::black, 16, 1);
  EXPECT_EQ(key(Qt::black, 16, 1), first);
  EXPECT_NE(key(Qt::white, 16, 1), first);
  EXPECT_NE(key(Qt::black, 32, 1), first);
  EXPECT_NE(key(Qt::black, 16, 2), first);
  EXPECT_EQ(key(Qt::black, 16, 1), first);
}

} // namespace
} // namespace driftmark::test
