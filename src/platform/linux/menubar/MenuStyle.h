#pragma once

#include "platform/linux/looks/SymbolImages.h"

#include <QProxyStyle>

class QStyleOptionMenuItem;

namespace driftmark {

class Look;
class MenuRow;

/// Draws a menu of MenuRows, mirrored where the layout direction is from right to left. The
/// styleObject of the option of a row is its MenuRow. A menu that is too high scrolls.
class MenuStyle final : public QProxyStyle {
public:
  /// `images` outlives the style. Without `isRounded` the menu's corners are square.
  MenuStyle(SymbolImages& images, bool isRounded, QObject* parent);

  /// The font of a row in a menu of that font.
  static QFont fontOf(const MenuRow& row, const QFont& menu);

  /// Sets the width of the menu's longest shortcut.
  void setShortcutWidth(int width) { shortcutWidth_ = width; }

  /// How much wider a menu must be than the title of this row.
  int widthAround(const MenuRow& row, const Look& look) const;

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
  int pixelMetric(PixelMetric metric, const QStyleOption* option,
                  const QWidget* widget) const override;
  QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                         const QWidget* widget) const override;
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* returnData) const override;

private:
  void drawRow(const QStyleOptionMenuItem& option, QPainter& painter, const Look& look,
               const MenuRow& row) const;
  void drawSymbol(QPainter& painter, const Look& look, const QRect& place, const std::string& name,
                  const QColor& colour) const;

  SymbolImages& images_;
  const bool isRounded_;
  int shortcutWidth_ = 0;
};

} // namespace driftmark
