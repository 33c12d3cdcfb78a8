// How a menu and its rows are drawn.

#include "platform/linux/menubar/MenuStyle.h"

#include "platform/linux/looks/Look.h"
#include "platform/linux/menubar/MenuRow.h"

#include <cmath>

#include <QPainter>
#include <QStyleOption>
#include <QWidget>

namespace driftmark {

namespace {

// In points.
constexpr qreal menuRadius = 10;
constexpr qreal menuMargin = 5; ///< around the rows
constexpr qreal rowRadius = 5;
constexpr qreal rowHeight = 24;
constexpr qreal rowPadding = 8; ///< before the symbol, between symbol and text, and after the row
constexpr qreal gapBeforeShortcut = 24;
constexpr qreal headingSize = 11;
constexpr qreal separatorInset = 5; ///< from the rows' ends
constexpr qreal separatorHeight = 11;
constexpr qreal scrollerHeight = 20;

bool isWarning(const std::string& symbol) {
  return symbol == "exclamationmark.circle" || symbol == "exclamationmark.triangle";
}

/// From the row's edge to the text.
int textInset(const Look& look) {
  return 2 * look.length(rowPadding) + look.symbolSize();
}

/// Draws from left to right in that order, whatever the text is. A name has its own direction
/// inside.
void drawText(QPainter& painter, const QRectF& place, const QString& text, const QColor& colour) {
  const QFontMetricsF metrics(painter.font(), painter.device());
  painter.setPen(colour);
  painter.drawText(QPointF(place.left(), std::round(place.center().y() + metrics.capHeight() / 2)),
                   text);
}

void drawPanel(QPainter& painter, const QRect& rect, const Look& look, bool isRounded) {
  const qreal radius = isRounded ? look.length(menuRadius) : 0;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(look.edge(), Look::hairline));
  painter.setBrush(look.ground());
  painter.drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
  painter.restore();
}

} // namespace

MenuStyle::MenuStyle(SymbolImages& images, bool isRounded, QObject* parent)
    : QProxyStyle(QStringLiteral("fusion")), images_(images), isRounded_(isRounded) {
  setParent(parent);
}

QFont MenuStyle::fontOf(const MenuRow& row, const QFont& menu) {
  return row.isHeading() ? Look({}, menu).font(headingSize, QFont::Bold) : menu;
}

int MenuStyle::widthAround(const MenuRow& row, const Look& look) const {
  const int shortcut =
      row.shortcut().isEmpty() ? 0 : look.length(gapBeforeShortcut) + shortcutWidth_;
  return 2 * look.length(menuMargin) + textInset(look) + shortcut + look.length(rowPadding);
}

void MenuStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                              QPainter* painter, const QWidget* widget) const {
  if (element == PE_PanelMenu)
    drawPanel(*painter, option->rect, Look(option->palette, widget->font()), isRounded_);
  else if (element != PE_FrameMenu)
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void MenuStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                            const QWidget* widget) const {
  const auto* const item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
  const Look look(option->palette, widget->font());
  switch (element) {
  case CE_MenuItem:
    if (const auto* const row = dynamic_cast<const MenuRow*>(option->styleObject); row && item)
      drawRow(*item, *painter, look, *row);
    break;
  case CE_MenuScroller:
    drawSymbol(*painter, look, option->rect,
               (option->state & State_DownArrow) != 0 ? "chevron.down" : "chevron.up",
               look.detail());
    break;
  case CE_MenuEmptyArea:
  case CE_MenuHMargin:
  case CE_MenuVMargin:
    break;
  default:
    QProxyStyle::drawControl(element, option, painter, widget);
  }
}

void MenuStyle::drawRow(const QStyleOptionMenuItem& option, QPainter& painter, const Look& look,
                        const MenuRow& row) const {
  if (row.isSeparator()) {
    const int inset = look.length(separatorInset);
    painter.fillRect(QRect(option.rect.left() + inset, option.rect.center().y(),
                           option.rect.width() - 2 * inset, Look::hairline),
                     look.separator());
    return;
  }
  const auto mirrored = [&option](const QRect& place) {
    return visualRect(option.direction, option.rect, place);
  };
  painter.save();
  painter.setLayoutDirection(Qt::LeftToRight);
  painter.setFont(fontOf(row, option.font));

  const bool isChosen = row.isEnabled() && (option.state & State_Selected) != 0;
  if (isChosen) {
    const qreal radius = look.length(rowRadius);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(look.chosen());
    painter.drawRoundedRect(option.rect, radius, radius);
  }
  const QColor ink = isChosen ? look.inkOnChosen() : row.isEnabled() ? look.ink() : look.label();
  const QColor faint = isChosen ? look.inkOnChosen() : row.isEnabled() ? look.detail() : ink;

  const int padding = look.length(rowPadding);
  QRect place = option.rect.adjusted(padding, 0, 0, 0);
  place.setWidth(look.symbolSize());
  drawSymbol(painter, look, mirrored(place), row.symbol(),
             isWarning(row.symbol()) && !isChosen ? look.warning() : ink);

  place = option.rect.adjusted(textInset(look), 0, -padding, 0);
  place.setWidth(static_cast<int>(std::ceil(row.width())));
  QRectF text = mirrored(place);
  drawText(painter, text, row.name(), ink);
  text.setLeft(text.left() + row.nameWidth());
  drawText(painter, text, row.detail(), faint);

  const QString shortcut = row.shortcut().toString(QKeySequence::NativeText);
  place = option.rect.adjusted(0, 0, -padding, 0);
  place.setLeft(place.right() + 1 - option.fontMetrics.horizontalAdvance(shortcut));
  drawText(painter, mirrored(place), shortcut, faint);
  painter.restore();
}

/// Draws in the middle of `place`.
void MenuStyle::drawSymbol(QPainter& painter, const Look& look, const QRect& place,
                           const std::string& name, const QColor& colour) const {
  const int size = look.symbolSize();
  const QRect square = alignedRect(Qt::LeftToRight, Qt::AlignCenter, QSize(size, size), place);
  painter.drawPixmap(square.topLeft(),
                     images_.image(name, colour, size, painter.device()->devicePixelRatioF()));
}

int MenuStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                           const QWidget* widget) const {
  const auto length = [widget](qreal points) {
    return widget != nullptr ? Look(widget->palette(), widget->font()).length(points) : 0;
  };
  switch (metric) {
  case PM_MenuHMargin:
  case PM_MenuVMargin:
    return length(menuMargin);
  case PM_MenuScrollerHeight:
    return length(scrollerHeight);
  case PM_MenuPanelWidth:
  case PM_MenuDesktopFrameWidth:
    return 0;
  default:
    return QProxyStyle::pixelMetric(metric, option, widget);
  }
}

/// The menu itself adds its margins and, to every row, the width of the longest shortcut.
QSize MenuStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                  const QWidget* widget) const {
  const auto* const row =
      option != nullptr ? dynamic_cast<const MenuRow*>(option->styleObject) : nullptr;
  if (type != CT_MenuItem || row == nullptr)
    return QProxyStyle::sizeFromContents(type, option, size, widget);
  const Look look(widget->palette(), widget->font());
  if (row->isSeparator())
    return {1, look.length(separatorHeight)};
  const int around = widthAround(*row, look) - 2 * look.length(menuMargin) - shortcutWidth_;
  return {static_cast<int>(std::ceil(row->width())) + around, look.length(rowHeight)};
}

int MenuStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                         QStyleHintReturn* returnData) const {
  return hint == SH_Menu_Scrollable ? 1 : QProxyStyle::styleHint(hint, option, widget, returnData);
}

} // namespace driftmark
