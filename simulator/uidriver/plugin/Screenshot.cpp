// How windows become a picture, with a screen and without one.

#include "uidriver/plugin/Screenshot.h"

#include <QGuiApplication>
#include <QLinearGradient>
#include <QPainter>
#include <QScreen>
#include <QWidget>

namespace icloud {
namespace {

void paintDesktop(QPainter& painter, const QSize& size) {
  QLinearGradient gradient(0, 0, 0, size.height());
  gradient.setColorAt(0, QColor(0x7f, 0x9d, 0xb9));
  gradient.setColorAt(1, QColor(0x4a, 0x5f, 0x78));
  painter.fillRect(QRect(QPoint(), size), gradient);
}

bool hasRealScreen() {
  return QGuiApplication::platformName() != "offscreen" &&
         QGuiApplication::platformName() != "minimal";
}

/// Draws a shadow below windows and dialogs. Strips and menus have edges instead.
void paintShadow(QPainter& painter, const QWidget& window, const QRect& geometry) {
  constexpr int reach = 14;
  const Qt::WindowType type = window.windowType();
  if (type != Qt::Dialog && type != Qt::Window)
    return;
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(0, 0, 0, 4));
  for (int by = 1; by <= reach; ++by)
    painter.drawRoundedRect(geometry.adjusted(-by, 4 - by, by, 4 + by), by, by);
}

} // namespace

QPixmap windowScreenshot(QWidget& window) {
  return window.grab();
}

QPixmap screenScreenshot(const QList<QWidget*>& windows) {
  QScreen* const screen = QGuiApplication::primaryScreen();
  if (screen == nullptr)
    return {};
  if (hasRealScreen())
    return screen->grabWindow(0);
  QPixmap picture(screen->size() * screen->devicePixelRatio());
  picture.setDevicePixelRatio(screen->devicePixelRatio());
  QPainter painter(&picture);
  paintDesktop(painter, screen->size());
  painter.setRenderHint(QPainter::Antialiasing);
  for (QWidget* const window : windows) {
    const QRect geometry = window->geometry().translated(-screen->geometry().topLeft());
    paintShadow(painter, *window, geometry);
    painter.drawPixmap(geometry.topLeft(), window->grab());
  }
  return picture;
}

} // namespace icloud
