// Which palettes of desktops the gallery draws in.

#include "Themes.h"

namespace driftmark::gallery {

namespace {

QPalette themeOf(const QColor& ground, const QColor& ink, const QColor& disabled,
                 const QColor& chosen, const QColor& inkOnChosen) {
  QPalette palette(ground);
  for (const auto role : {QPalette::Window, QPalette::Base, QPalette::Button})
    palette.setColor(role, ground);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(role, ink);
    palette.setColor(QPalette::Disabled, role, disabled);
  }
  palette.setColor(QPalette::Highlight, chosen);
  palette.setColor(QPalette::HighlightedText, inkOnChosen);
  return palette;
}

} // namespace

std::vector<Theme> themes() {
  return {{"light", QPalette(QColor(239, 239, 239))},
          {"dark", QPalette(QColor(45, 45, 48))},
          {"contrast", themeOf(Qt::black, Qt::white, QColor(0x3F, 0xF2, 0x3F),
                               QColor(0x1A, 0xEB, 0xFF), Qt::black)},
          {"contrast-light",
           themeOf(Qt::white, Qt::black, QColor(0x60, 0, 0), QColor(0x37, 0, 0x6E), Qt::white)}};
}

} // namespace driftmark::gallery
