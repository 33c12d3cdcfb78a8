// How the strip is placed and drawn, and what presses it.

#include "platform/linux/menubar/MenuBarStrip.h"

#include "platform/linux/menubar/ElidedText.h"

#include <algorithm>
#include <cmath>

#include <QApplication>
#include <QCloseEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>

namespace driftmark {

namespace {

// In points.
constexpr qreal barHeight = 24;
constexpr qreal titleSize = 11;
constexpr qreal margin = 10;
constexpr qreal titleGap = 5;
constexpr qreal maxTitleWidth = 240;

/// A title takes at least the width of this one, so that the strip does not move as a percentage
/// grows.
const QString& usualTitle() {
  static const QString title = QStringLiteral("100%");
  return title;
}

bool isDigit(QChar character) {
  return character >= u'0' && character <= u'9';
}

qreal digitWidth(const QFontMetricsF& metrics) {
  qreal widest = 0;
  for (char16_t digit = u'0'; digit <= u'9'; ++digit)
    widest = std::max(widest, metrics.horizontalAdvance(QChar(digit)));
  return widest;
}

/// Lays a title out with all digits as wide as the widest one, so that a percentage does not jump.
/// Calls `place` for each digit and each text between digits, with its position and its width.
/// Returns the total width.
template <class Place>
qreal layOut(const QString& text, const QFontMetricsF& metrics, const Place& place) {
  const qreal digit = digitWidth(metrics);
  qreal x = 0;
  for (qsizetype at = 0; at < text.size();) {
    const QChar* const begin = text.cbegin() + at;
    const qsizetype length =
        isDigit(*begin) ? 1 : std::find_if(begin, text.cend(), isDigit) - begin;
    const QString part = text.sliced(at, length);
    const qreal width = isDigit(*begin) ? digit : metrics.horizontalAdvance(part);
    place(part, x, width);
    x += width;
    at += length;
  }
  return x;
}

qreal titleWidth(const QString& text, const QFontMetricsF& metrics) {
  return layOut(text, metrics, [](const QString&, qreal, qreal) {});
}

/// Draws with the painter's font, from a point on the base line.
void drawTitle(QPainter& painter, const QPointF& position, const QString& text) {
  const QFontMetricsF metrics(painter.font(), painter.device());
  layOut(text, metrics, [&](const QString& part, qreal x, qreal width) {
    const qreal offset = (width - metrics.horizontalAdvance(part)) / 2;
    painter.drawText(position + QPointF(x + offset, 0), part);
  });
}

QColor translucent(QColor colour, qreal opacity) {
  colour.setAlphaF(static_cast<float>(opacity));
  return colour;
}

} // namespace

MenuBarStrip::MenuBarStrip(SymbolImages& images, std::function<void()> onPress)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      panel_(*this, [this] { place(); }), images_(images), onPress_(std::move(onPress)) {
  installMenuBarAccessibility();
  setObjectName(QStringLiteral("MenuBarStrip"));
  setWindowTitle(QStringLiteral("Driftmark"));
  setAttribute(Qt::WA_ShowWithoutActivating);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setAttribute(Qt::WA_QuitOnClose, false);
  setFocusPolicy(Qt::TabFocus);
  useSystemFont();
  connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, [this] { followScreen(); });
  followScreen();
}

void MenuBarStrip::setSymbol(const std::string& name, const QString& description) {
  if (description != accessibleName())
    setAccessibleName(description);
  if (name == symbol_)
    return;
  symbol_ = name;
  update();
}

void MenuBarStrip::setTitle(const std::string& title) {
  if (title == title_)
    return;
  title_ = title;
  fit();
  update();
}

void MenuBarStrip::setHighlighted(bool highlighted) {
  if (highlighted == isHighlighted_)
    return;
  isHighlighted_ = highlighted;
  update();
}

bool MenuBarStrip::event(QEvent* event) {
  switch (event->type()) {
  case QEvent::ToolTip:
    showPlainToolTip(static_cast<QHelpEvent*>(event)->globalPos(), {toolTip()}, this);
    return true;
  case QEvent::ThemeChange:
    Look::apply();
    break;
  case QEvent::ApplicationFontChange:
    useSystemFont();
    break;
  default:
    break;
  }
  return QWidget::event(event);
}

void MenuBarStrip::paintEvent(QPaintEvent* /*event*/) {
  ++paintCount_;
  const Look look = this->look();
  const QColor ink = look.ink();
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillRect(rect(), look.ground());
  painter.fillRect(0, height() - Look::hairline, width(), Look::hairline, look.edge());
  painter.fillRect(0, 0, Look::hairline, height(), look.edge());

  const QRectF item = QRectF(rect()).adjusted(4, 2, -3, -3);
  painter.setPen(Qt::NoPen);
  if (isHighlighted_) {
    painter.setBrush(translucent(ink, 0.16));
    painter.drawRoundedRect(item, 4, 4);
  }
  if (showsFocus_ && hasFocus()) {
    painter.setPen(QPen(look.chosen(), 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(item.adjusted(1, 1, -1, -1), 3, 3);
  }

  const int left = look.length(margin);
  const int symbolSize = look.symbolSize();
  painter.drawPixmap(QPoint(left, (height() - symbolSize) / 2),
                     images_.image(symbol_, ink, symbolSize, devicePixelRatioF()));
  if (elidedTitle_.isEmpty())
    return;
  painter.setFont(font());
  painter.setPen(ink);
  const QFontMetricsF metrics(font(), this);
  const qreal baseLine = std::round((height() + metrics.capHeight()) / 2);
  drawTitle(painter, QPointF(left + symbolSize + look.length(titleGap), baseLine), elidedTitle_);
}

void MenuBarStrip::mousePressEvent(QMouseEvent* event) {
  showsFocus_ = false;
  event->accept();
  press();
}

void MenuBarStrip::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
  case Qt::Key_Space:
  case Qt::Key_Return:
  case Qt::Key_Enter:
  case Qt::Key_Down:
    press();
    break;
  case Qt::Key_Escape:
    giveFocusBack();
    break;
  default:
    QWidget::keyPressEvent(event);
  }
}

void MenuBarStrip::focusInEvent(QFocusEvent* event) {
  if (event->reason() != Qt::PopupFocusReason)
    showsFocus_ = QGuiApplication::mouseButtons() == Qt::NoButton;
  QWidget::focusInEvent(event);
}

void MenuBarStrip::showEvent(QShowEvent* event) {
  panel_.declare();
  place();
  QWidget::showEvent(event);
}

/// A strip that the user closes is shown again by the event loop, unless the application ends.
void MenuBarStrip::closeEvent(QCloseEvent* event) {
  QMetaObject::invokeMethod(this, &QWidget::show, Qt::QueuedConnection);
  QWidget::closeEvent(event);
}

void MenuBarStrip::useSystemFont() {
  setFont(look().font(titleSize));
  fit();
}

Look MenuBarStrip::look() const {
  return {palette(), QApplication::font()};
}

void MenuBarStrip::followScreen() {
  disconnect(screenConnection_);
  if (const QScreen* const screen = QGuiApplication::primaryScreen())
    screenConnection_ =
        connect(screen, &QScreen::availableGeometryChanged, this, [this] { place(); });
  place();
}

/// Sets the width that the contents need.
void MenuBarStrip::fit() {
  const Look look = this->look();
  qreal needed = 2 * look.length(margin) + look.symbolSize();
  elidedTitle_.clear();
  if (!title_.empty()) {
    const QFontMetricsF metrics(font(), this);
    elidedTitle_ =
        elidedLine(QString::fromStdString(title_), metrics, look.length(maxTitleWidth)).text;
    needed += look.length(titleGap) +
              std::max(titleWidth(elidedTitle_, metrics), titleWidth(usualTitle(), metrics));
  }
  setFixedSize(static_cast<int>(std::ceil(needed)), look.length(barHeight));
  place();
}

void MenuBarStrip::place() {
  if (const QScreen* const screen = QGuiApplication::primaryScreen()) {
    const QRect area = panel_.freeArea(*screen);
    move(area.right() + 1 - width(), area.top());
    panel_.reserve(*screen);
  }
}

} // namespace driftmark
