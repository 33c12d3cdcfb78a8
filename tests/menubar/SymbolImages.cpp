#include "platform/linux/menubar/SymbolImages.h"

#include <string>

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
                                         "exclamationmark.triangle", "checkmark.circle"));

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
  EXPECT_GT(inked, size * ratio * 4);
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
