// Which colours, fonts and lengths the frontend uses.

#include "platform/linux/looks/Look.h"

#include "platform/linux/looks/WindowStyle.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <QApplication>
#include <QFontDatabase>
#include <QScreen>

namespace driftmark {

namespace {

constexpr qreal usualFontSize = 13;

/// Text and ground of a theme of high contrast differ at least by this; black and white by 21.
constexpr qreal highContrast = 19.5;

/// What Qt uses where no desktop names a font.
constexpr const char* unnamedFamily = "Sans Serif";
constexpr qreal unnamedPointSize = 9;

struct Colours {
  QRgb ground, field, button, text, secondary, chosen, warning;
};

constexpr Colours light{.ground = 0xFFF6F6F7,
                        .field = 0xFFFFFFFF,
                        .button = 0xFFFFFFFF,
                        .text = 0xFF1D1D1F,
                        .secondary = 0xFF63636A,
                        .chosen = 0xFF0A62D0,
                        .warning = 0xFFA85400};
constexpr Colours dark{.ground = 0xFF2A2A2D,
                       .field = 0xFF1E1E20,
                       .button = 0xFF3C3C40,
                       .text = 0xFFF2F2F4,
                       .secondary = 0xFFA5A5AD,
                       .chosen = 0xFF1F6FE0,
                       .warning = 0xFFFFB45C};

qreal luminance(const QColor& colour) {
  const auto linear = [](qreal part) {
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
         0.0722 * linear(colour.blueF());
}

/// From 1 to 21.
qreal contrast(const QColor& one, const QColor& other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

bool hasHighContrast(const QPalette& palette) {
  return contrast(palette.color(QPalette::Active, QPalette::Window),
                  palette.color(QPalette::Active, QPalette::WindowText)) >= highContrast;
}

bool isDark(const QPalette& palette) {
  return luminance(palette.color(QPalette::Active, QPalette::Window)) <
         luminance(palette.color(QPalette::Active, QPalette::WindowText));
}

const Colours& coloursFor(const QPalette& palette) {
  return isDark(palette) ? dark : light;
}

/// `part` of `ink` on `ground`.
QColor mixed(const QColor& ground, const QColor& ink, float part) {
  const auto mix = [part](float from, float to) { return from + (to - from) * part; };
  return QColor::fromRgbF(mix(ground.redF(), ink.redF()), mix(ground.greenF(), ink.greenF()),
                          mix(ground.blueF(), ink.blueF()));
}

/// The size that the font asks for. The font is not loaded: that takes two megabytes, which a strip
/// without a title does without.
qreal pixelSize(const QFont& font) {
  constexpr qreal pointsPerInch = 72;
  const QScreen* const screen = QGuiApplication::primaryScreen();
  if (font.pixelSize() > 0 || screen == nullptr)
    return font.pixelSize() > 0 ? font.pixelSize() : font.pointSizeF();
  return std::round(font.pointSizeF() * screen->logicalDotsPerInchY() / pointsPerInch);
}

} // namespace

Look::Look(const QPalette& palette, const QFont& font)
    : palette_(palette), font_(font), scale_(pixelSize(font) / usualFontSize),
      hasHighContrast_(hasHighContrast(palette)) {}

void Look::apply() {
  QApplication::setPalette(QPalette()); // the desktop's
  QApplication::setPalette(paletteFor(QApplication::palette()));
  const QFont font = fontFor(QFontDatabase::systemFont(QFontDatabase::GeneralFont));
  if (font != QApplication::font())
    QApplication::setFont(font);
  if (dynamic_cast<WindowStyle*>(QApplication::style()) == nullptr)
    QApplication::setStyle(new WindowStyle(QApplication::style()->name()));
}

QPalette Look::paletteFor(const QPalette& desktop) {
  if (hasHighContrast(desktop))
    return desktop;
  const Colours& colours = coloursFor(desktop);
  const QColor ground(colours.ground);
  const QColor text(colours.text);
  const QColor secondary(colours.secondary);
  QPalette palette(QColor(colours.button), ground);
  for (const auto role :
       {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
    palette.setColor(role, text);
    palette.setColor(QPalette::Disabled, role, secondary);
  }
  for (const auto role : {QPalette::Base, QPalette::ToolTipBase})
    palette.setColor(role, QColor(colours.field));
  palette.setColor(QPalette::AlternateBase, mixed(QColor(colours.field), text, 0.04F));
  palette.setColor(QPalette::PlaceholderText, secondary);
  palette.setColor(QPalette::Highlight, QColor(colours.chosen));
  palette.setColor(QPalette::Disabled, QPalette::Highlight, mixed(ground, text, 0.28F));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Link, QColor(colours.chosen));
  return palette;
}

QFont Look::fontFor(const QFont& desktop) {
  if (desktop.family() != QLatin1String(unnamedFamily))
    return desktop;
  QFont font = desktop;
  // The first that is installed, once the font is needed.
  font.setFamilies({QStringLiteral("Inter"), desktop.family()});
  if (font.pointSizeF() == unnamedPointSize)
    font.setPixelSize(static_cast<int>(usualFontSize));
  return font;
}

int Look::length(qreal points) const {
  return std::max(1, static_cast<int>(std::lround(points * scale_)));
}

int Look::symbolSize() const {
  return std::max(16, length(16));
}

QFont Look::font(qreal points, QFont::Weight weight) const {
  QFont font = font_;
  font.setPixelSize(length(points));
  font.setWeight(weight);
  return font;
}

QColor Look::ground() const {
  return palette_.color(QPalette::Active, QPalette::Window);
}

QColor Look::ink() const {
  return palette_.color(QPalette::Active, QPalette::WindowText);
}

QColor Look::label() const {
  return palette_.color(QPalette::Disabled, QPalette::WindowText);
}

QColor Look::detail() const {
  return hasHighContrast_ ? ink() : label();
}

QColor Look::separator() const {
  return hasHighContrast_ ? ink() : mixed(ground(), ink(), 0.16F);
}

QColor Look::edge() const {
  return hasHighContrast_ ? ink() : mixed(ground(), ink(), 0.28F);
}

QColor Look::chosen() const {
  return palette_.color(QPalette::Active, QPalette::Highlight);
}

QColor Look::inkOnChosen() const {
  return palette_.color(QPalette::Active, QPalette::HighlightedText);
}

QColor Look::warning() const {
  return hasHighContrast_ ? ink() : QColor(coloursFor(palette_).warning);
}

} // namespace driftmark
