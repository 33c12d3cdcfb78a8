#include "person/plugin/Picture.h"

#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QWidget>

namespace icloud {
namespace {

const QColor desktop(0x5a, 0x73, 0x8c);

bool hasRealScreen() {
  return QGuiApplication::platformName() != "offscreen" &&
         QGuiApplication::platformName() != "minimal";
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
  picture.fill(desktop);
  QPainter painter(&picture);
  for (QWidget* const window : windows)
    painter.drawPixmap(window->geometry().topLeft() - screen->geometry().topLeft(), window->grab());
  return picture;
}

} // namespace icloud
