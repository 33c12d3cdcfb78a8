#pragma once

#include <QList>
#include <QPixmap>

class QWidget;

namespace icloud {

/// A picture of one window.
QPixmap windowScreenshot(QWidget& window);

/// A picture of the whole screen. On a platform without a real screen it is composed of `windows`,
/// the topmost last.
QPixmap screenScreenshot(const QList<QWidget*>& windows);

} // namespace icloud
