// How buttons, frames and icons are drawn.

#include "platform/linux/looks/WindowStyle.h"

#include "platform/linux/looks/Look.h"
#include "platform/linux/looks/SymbolImages.h"

#include <string>

#include <QApplication>
#include <QPainter>
#include <QStyleOptionButton>

namespace driftmark {

namespace {

/// The default button, unless it cannot be pressed.
bool isFilled(const QStyleOptionButton& button) {
  return (button.features & QStyleOptionButton::DefaultButton) != 0 &&
         (button.state & QStyle::State_Enabled) != 0;
}

QColor fill(const QStyleOptionButton& button, const Look& look) {
  const QColor colour =
      isFilled(button) ? look.chosen() : button.palette.color(QPalette::Active, QPalette::Button);
  return (button.state & QStyle::State_Sunken) != 0 ? colour.darker(112) : colour;
}

void drawBevel(const QStyleOptionButton& button, QPainter& painter) {
  const Look look(button.palette, painter.font());
  const qreal radius = look.length(6);
  const QRectF outline = QRectF(button.rect).adjusted(0.5, 0.5, -0.5, -0.5);
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(isFilled(button) ? look.chosen() : look.edge());
  painter.setBrush(fill(button, look));
  painter.drawRoundedRect(outline, radius, radius);
  if ((button.state & QStyle::State_HasFocus) != 0 &&
      (button.state & QStyle::State_KeyboardFocusChange) != 0) {
    painter.setPen(QPen(isFilled(button) ? look.inkOnChosen() : look.chosen(), 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(outline.adjusted(2.5, 2.5, -2.5, -2.5), radius - 2, radius - 2);
  }
  painter.restore();
}

/// The name of the symbol for an icon; empty for none.
std::string symbolFor(QStyle::StandardPixmap icon) {
  switch (icon) {
  case QStyle::SP_ArrowBack:
    return "chevron.left";
  case QStyle::SP_ArrowForward:
    return "chevron.right";
  case QStyle::SP_FileDialogToParent:
    return "chevron.up";
  case QStyle::SP_DirIcon:
  case QStyle::SP_DirHomeIcon:
  case QStyle::SP_DirLinkIcon:
    return "folder";
  default:
    return "";
  }
}

QIcon symbolIcon(const std::string& name) {
  const Look look(QApplication::palette(), QApplication::font());
  const int size = look.symbolSize();
  SymbolImages images;
  QIcon icon;
  for (const qreal ratio : {1, 2}) {
    icon.addPixmap(images.image(name, look.ink(), size, ratio), QIcon::Normal);
    icon.addPixmap(images.image(name, look.inkOnChosen(), size, ratio), QIcon::Selected);
    icon.addPixmap(images.image(name, look.label(), size, ratio), QIcon::Disabled);
  }
  return icon;
}

/// The frame of a field or a list.
void drawFrame(const QStyleOption& field, QPainter& painter) {
  const Look look(field.palette, painter.font());
  const bool hasFocus = (field.state & QStyle::State_HasFocus) != 0;
  const qreal width = hasFocus ? 2 : Look::hairline;
  painter.save();
  painter.setPen(QPen(hasFocus ? look.chosen() : look.edge(), width, Qt::SolidLine, Qt::SquareCap,
                      Qt::MiterJoin));
  painter.setBrush(Qt::NoBrush);
  painter.drawRect(QRectF(field.rect).adjusted(width / 2, width / 2, -width / 2, -width / 2));
  painter.restore();
}

} // namespace

WindowStyle::WindowStyle(const QString& name)
    : QProxyStyle(name), isFlat_(name == QLatin1String("fusion")) {}

void WindowStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                QPainter* painter, const QWidget* widget) const {
  if (isFlat_ && (element == PE_Frame || element == PE_FrameLineEdit))
    drawFrame(*option, *painter);
  else
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void WindowStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const {
  if (isFlat_ && element == CE_Splitter)
    return;
  const auto* const button = qstyleoption_cast<const QStyleOptionButton*>(option);
  if (!isFlat_ || button == nullptr ||
      (element != CE_PushButtonBevel && element != CE_PushButtonLabel)) {
    QProxyStyle::drawControl(element, option, painter, widget);
    return;
  }
  if (element == CE_PushButtonBevel) {
    drawBevel(*button, *painter);
    return;
  }
  QStyleOptionButton label = *button;
  if (isFilled(label))
    label.palette.setColor(QPalette::ButtonText,
                           Look(label.palette, painter->font()).inkOnChosen());
  QProxyStyle::drawControl(element, &label, painter, widget);
}

QIcon WindowStyle::standardIcon(StandardPixmap icon, const QStyleOption* option,
                                const QWidget* widget) const {
  const std::string symbol = isFlat_ ? symbolFor(icon) : "";
  return symbol.empty() ? QProxyStyle::standardIcon(icon, option, widget) : symbolIcon(symbol);
}

int WindowStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                           QStyleHintReturn* returnData) const {
  return hint == SH_DialogButtonBox_ButtonsHaveIcons
             ? 0
             : QProxyStyle::styleHint(hint, option, widget, returnData);
}

} // namespace driftmark
