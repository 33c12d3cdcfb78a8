// How much what was drawn differs from its ground.

#include "Items.h"
#include "Themes.h"
#include "platform/linux/menubar/LinuxStatusItem.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <string>
#include <utility>

#include <QAction>
#include <QImage>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

struct Desktop {
  std::string name;
  QPalette palette;
  bool hasHighContrast;
};

std::ostream& operator<<(std::ostream& stream, const Desktop& desktop) {
  return stream << desktop.name;
}

double luminance(QRgb pixel) {
  const auto linear = [](int part) {
    const double value = part / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(qRed(pixel)) + 0.7152 * linear(qGreen(pixel)) +
         0.0722 * linear(qBlue(pixel));
}

double contrast(QRgb one, QRgb other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

class Contrast : public testing::TestWithParam<Desktop> {
protected:
  enum Row { headline, line, first, stalled, second, shortcut };

  void SetUp() override {
    MenuItem drive = command("\u2588");
    drive.keyEquivalent = "o";
    Menu items{label("\u2588"),
               separator(),
               file("\u2588", "arrow.up.circle", "uploading \u2588"),
               file("a", "exclamationmark.circle", "stalled"),
               command("\u2588"),
               drive};
    item_.setMenu([items = std::move(items)] { return items; }, [] {});
    item_.strip().press();
    item_.menu()->setActiveAction(item_.menu()->actions().at(second));
    picture_ = item_.menu()->grab().toImage();
  }

  /// The pixels of a row.
  QImage row(Row index) {
    const QRect place = item_.menu()->actionGeometry(item_.menu()->actions().at(index));
    const qreal ratio = picture_.devicePixelRatio();
    return picture_.copy(
        QRectF(QPointF(place.topLeft()) * ratio, QSizeF(place.size()) * ratio).toRect());
  }

  /// The part of a row before its text, where the symbol is.
  QImage symbol(Row index) {
    const QImage all = row(index);
    return all.copy(0, 0, static_cast<int>(30 * all.devicePixelRatio()), all.height());
  }

  QRgb ground() const { return picture_.pixel(picture_.width() / 2, unit() * 2); }
  int unit() const { return static_cast<int>(picture_.devicePixelRatio()); }

  /// The pixel that differs most from `ground`.
  static QRgb ink(const QImage& image, QRgb ground) {
    QRgb best = ground;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x)
        if (contrast(image.pixel(x, y), ground) > contrast(best, ground))
          best = image.pixel(x, y);
    return best;
  }

  static double mostContrast(const QImage& image, QRgb ground) {
    return contrast(ink(image, ground), ground);
  }

  const Theme theme_{GetParam().palette};
  LinuxStatusItem item_;
  QImage picture_;
};

INSTANTIATE_TEST_SUITE_P(
    Themes, Contrast,
    testing::Values(Desktop{"light", QPalette(QColor(239, 239, 239)), false},
                    Desktop{"dark", QPalette(QColor(45, 45, 48)), false},
                    Desktop{"whiteOnBlack", themeOfHighContrast(Qt::black, Qt::white), true},
                    Desktop{"blackOnWhite", themeOfHighContrast(Qt::white, Qt::black), true},
                    Desktop{"yellowOnBlack", themeOfHighContrast(Qt::black, Qt::yellow), true}),
    [](const auto& parameter) { return parameter.param.name; });

TEST_P(Contrast, chosenRowIsReadableAndStandsOut) {
  const QImage chosen = row(second);
  const QRgb fill = chosen.pixel(4 * unit(), chosen.height() / 2);
  EXPECT_GE(contrast(fill, ground()), 2);
  EXPECT_GE(mostContrast(chosen, fill), 4.5);
}

TEST_P(Contrast, textsAreReadable) {
  EXPECT_GE(mostContrast(row(first), ground()), 12);
  EXPECT_GE(mostContrast(row(shortcut), ground()), 12);
  EXPECT_GE(mostContrast(symbol(stalled), ground()), 4.5);
  if (!GetParam().hasHighContrast) {
    EXPECT_GE(mostContrast(row(headline), ground()), 4.5);
  }
}

TEST_P(Contrast, highContrastKeepsDisabledColour) {
  const QRgb disabled = GetParam().palette.color(QPalette::Disabled, QPalette::WindowText).rgb();
  EXPECT_EQ(ink(row(headline), ground()) == disabled, GetParam().hasHighContrast);
}

TEST_P(Contrast, linesAreVisible) {
  const bool high = GetParam().hasHighContrast;
  EXPECT_GE(mostContrast(row(line), ground()), high ? 15 : 1.35);
  const int middle = picture_.height() / 2;
  EXPECT_GE(contrast(picture_.pixel(0, middle), ground()), high ? 15 : 1.7);
  EXPECT_GE(contrast(picture_.pixel(picture_.width() - 1, middle), ground()), high ? 15 : 1.7);

  const QImage strip = item_.strip().grab().toImage();
  const QRgb paper = strip.pixel(strip.width() - 1, 0);
  EXPECT_GE(contrast(strip.pixel(0, 0), paper), high ? 15 : 1.7);
  EXPECT_GE(contrast(strip.pixel(strip.width() - 1, strip.height() - 1), paper), high ? 15 : 1.7);
}

TEST_P(Contrast, warningHasItsOwnColourExceptInHighContrast) {
  EXPECT_EQ(ink(symbol(stalled), ground()) == ink(symbol(first), ground()),
            GetParam().hasHighContrast);
}

} // namespace
} // namespace driftmark::test
