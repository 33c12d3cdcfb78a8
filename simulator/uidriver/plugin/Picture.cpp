#include "uidriver/plugin/Picture.h"

#include <QGuiApplication>
#include <QLinearGradient>
#include <QPainter>
#include <QScreen>
#include <QWidget>

namespace icloud {
namespace {

void paintDesktop(QPainter& painter, const QSize& size) {
  QLinearGradient dusk(0, 0, 0, size.height());
  dusk.setColorAt(0, QColor(0x7f, 0x9d, 0xb9));
  dusk.setColorAt(1, QColor(0x4a, 0x5f, 0x78));
  painter.fillRect(QRect(QPoint(), size), dusk);
}

bool hasRealScreen() {
  return QGuiApplication::platformName() != "offscreen" &&
         QGuiApplication::platformName() != "minimal";
}

/// What lifts a window of its own from the desktop; strips and menus have their edges.
void paintShadow(QPainter& painter, const QWidget& window, const QRect& place) {
  constexpr int reach = 14;
  const Qt::WindowType type = window.windowType();
  if (type != Qt::Dialog && type != Qt::Window)
    return;
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(0, 0, 0, 4));
  for (int by = 1; by <= reach; ++by)
    painter.drawRoundedRect(place.adjusted(-by, 4 - by, by, 4 + by), by, by);
}

} // namespace

QPixmap pictureOf(QWidget& window) {
  return window.grab();
}

QPixmap pictureOfScreen(const QList<QWidget*>& windows) {
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
    const QRect place = window->geometry().translated(-screen->geometry().topLeft());
    paintShadow(painter, *window, place);
    painter.drawPixmap(place.topLeft(), window->grab());
  }
  return picture;
}

} // namespace icloud
