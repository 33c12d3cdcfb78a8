#pragma once

#include <QList>
#include <QPixmap>

class QWidget;

namespace icloud {

/// A picture of one window.
QPixmap pictureOf(QWidget& window);

/// A picture of the whole screen. Where the platform has none to look at, the windows are put
/// together in the order given, the topmost last.
QPixmap pictureOfScreen(const QList<QWidget*>& windows);

} // namespace icloud
