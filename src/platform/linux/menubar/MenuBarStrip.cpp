#include "platform/linux/menubar/MenuBarStrip.h"

#include "platform/linux/menubar/DisplayText.h"
#include "platform/linux/menubar/TabularText.h"

#include <algorithm>
#include <cmath>

#include <QAccessibleWidget>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScreen>

namespace driftmark {

namespace {

// Points are those of a Mac: one device-independent pixel each.
constexpr int barHeight = 24;
constexpr int symbolSize = 16;
constexpr int titlePoints = 11;
constexpr int margin = 10;
constexpr int titleGap = 5;
constexpr qreal widestTitle = 240;

/// Any title has the room of this one, so that a percentage can grow without moving the strip.
const QString& usualTitle() {
  static const QString title = QStringLiteral("100%");
  return title;
}

/// A menu button for screen readers.
class StripAccessible final : public QAccessibleWidget {
public:
  explicit StripAccessible(MenuBarStrip* strip)
      : QAccessibleWidget(strip, QAccessible::ButtonMenu), strip_(strip) {}

  QStringList actionNames() const override { return {showMenuAction(), pressAction()}; }
  void doAction(const QString& name) override {
    if (name == showMenuAction() || name == pressAction())
      strip_->press();
  }
  QAccessible::State state() const override {
    QAccessible::State state = QAccessibleWidget::state();
    state.hasPopup = true;
    state.expanded = strip_->isHighlighted();
    return state;
  }

  int childCount() const override { return openMenu() != nullptr ? 1 : 0; }
  QAccessibleInterface* child(int index) const override {
    return index == 0 ? QAccessible::queryAccessibleInterface(openMenu()) : nullptr;
  }
  int indexOfChild(const QAccessibleInterface* child) const override {
    return child != nullptr && child->object() != nullptr && child->object() == openMenu() ? 0 : -1;
  }

private:
  /// Qt lists no menu among the children of a widget, nor among the application's windows.
  QMenu* openMenu() const {
    const auto menus = strip_->findChildren<QMenu*>(QString(), Qt::FindDirectChildrenOnly);
    const auto open = std::ranges::find_if(menus, &QMenu::isVisible);
    return open != menus.end() ? *open : nullptr;
  }

  MenuBarStrip* const strip_;
};

QAccessibleInterface* accessibleFor(const QString& /*className*/, QObject* object) {
  auto* const strip = dynamic_cast<MenuBarStrip*>(object);
  return strip != nullptr ? new StripAccessible(strip) : nullptr;
}

QColor translucent(QColor colour, qreal opacity) {
  colour.setAlphaF(static_cast<float>(opacity));
  return colour;
}

} // namespace

MenuBarStrip::MenuBarStrip(SymbolImages& images, std::function<void()> onPress)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      images_(images), onPress_(std::move(onPress)) {
  QAccessible::installFactory(accessibleFor);
  setObjectName(QStringLiteral("MenuBarStrip"));
  setWindowTitle(QStringLiteral("Driftmark"));
  setAttribute(Qt::WA_ShowWithoutActivating);
  setAttribute(Qt::WA_X11NetWmWindowTypeDock);
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
    display_text::showToolTip(static_cast<QHelpEvent*>(event)->globalPos(), {toolTip()}, this);
    return true;
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
  const QColor ink = palette().color(QPalette::WindowText);
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillRect(rect(), palette().color(QPalette::Window));
  painter.fillRect(0, height() - 1, width(), 1, translucent(ink, 0.18));
  painter.fillRect(0, 0, 1, height() - 1, translucent(ink, 0.18));

  const QRectF item = QRectF(rect()).adjusted(4, 2, -3, -3);
  painter.setPen(Qt::NoPen);
  if (isHighlighted_) {
    painter.setBrush(translucent(ink, 0.16));
    painter.drawRoundedRect(item, 4, 4);
  }
  if (showsFocus_ && hasFocus()) {
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(item.adjusted(1, 1, -1, -1), 3, 3);
  }

  painter.drawPixmap(QPoint(margin, (barHeight - symbolSize) / 2),
                     images_.image(symbol_, ink, symbolSize, devicePixelRatioF()));
  if (shownTitle_.isEmpty())
    return;
  painter.setFont(font());
  painter.setPen(ink);
  const QFontMetricsF metrics(font(), this);
  const qreal baseLine = std::round((barHeight + metrics.capHeight()) / 2);
  tabular_text::draw(painter, {margin + symbolSize + titleGap, baseLine}, shownTitle_);
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
  default:
    QWidget::keyPressEvent(event);
  }
}

void MenuBarStrip::focusInEvent(QFocusEvent* event) {
  if (event->reason() != Qt::PopupFocusReason)
    showsFocus_ = QGuiApplication::mouseButtons() == Qt::NoButton;
  QWidget::focusInEvent(event);
}

/// Closed by a user, the strip comes back; while the application ends, no event loop brings it.
void MenuBarStrip::closeEvent(QCloseEvent* event) {
  QMetaObject::invokeMethod(this, &QWidget::show, Qt::QueuedConnection);
  QWidget::closeEvent(event);
}

void MenuBarStrip::useSystemFont() {
  QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
  font.setPixelSize(titlePoints);
  setFont(font);
  fit();
}

void MenuBarStrip::followScreen() {
  disconnect(screenConnection_);
  if (const QScreen* const screen = QGuiApplication::primaryScreen())
    screenConnection_ =
        connect(screen, &QScreen::availableGeometryChanged, this, [this] { place(); });
  place();
}

/// Gives the strip the width that its contents need.
void MenuBarStrip::fit() {
  const QFontMetricsF metrics(font(), this);
  shownTitle_ = display_text::line(QString::fromStdString(title_), metrics, widestTitle).text;
  qreal needed = 2 * margin + symbolSize;
  if (!shownTitle_.isEmpty())
    needed += titleGap + std::max(tabular_text::width(shownTitle_, metrics),
                                  tabular_text::width(usualTitle(), metrics));
  setFixedSize(static_cast<int>(std::ceil(needed)), barHeight);
  place();
}

void MenuBarStrip::place() {
  if (const QScreen* const screen = QGuiApplication::primaryScreen()) {
    const QRect area = screen->availableGeometry();
    move(area.right() + 1 - width(), area.top());
  }
}

} // namespace driftmark
