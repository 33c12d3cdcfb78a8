#pragma once

#include "platform/linux/looks/Look.h"

#include <QApplication>
#include <QColor>
#include <QPalette>

namespace driftmark::test {

inline QPalette themeOfHighContrast(const QColor& ground, const QColor& ink) {
  QPalette palette(ground);
  for (const auto role : {QPalette::Window, QPalette::Base, QPalette::Button})
    palette.setColor(role, ground);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(role, ink);
    palette.setColor(QPalette::Disabled, role, QColor(0x80, 0x80, 0x20));
  }
  palette.setColor(QPalette::Highlight, ink);
  palette.setColor(QPalette::HighlightedText, ground);
  return palette;
}

/// A desktop's theme, for as long as this exists.
class Theme {
public:
  explicit Theme(const QPalette& desktop) { QApplication::setPalette(Look::paletteFor(desktop)); }
  Theme(const Theme&) = delete;
  Theme& operator=(const Theme&) = delete;
  ~Theme() { Look::apply(); }
};

/// A desktop's font of that size, for as long as this exists.
class FontOfSize {
public:
  explicit FontOfSize(int pixels) {
    QFont font = before_;
    font.setPixelSize(pixels);
    QApplication::setFont(font);
  }
  FontOfSize(const FontOfSize&) = delete;
  FontOfSize& operator=(const FontOfSize&) = delete;
  ~FontOfSize() { QApplication::setFont(before_); }

private:
  const QFont before_ = QApplication::font();
};

} // namespace driftmark::test
