#pragma once

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWidget>

namespace driftmark::test {

/// Presses and releases a key in `widget`.
inline void pressKey(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
  for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
    QKeyEvent event(type, key, modifiers);
    QCoreApplication::sendEvent(&widget, &event);
  }
}

/// Presses and releases the left mouse button at a position in `widget`.
inline void click(QWidget& widget, QPoint position) {
  const QPointF local(position);
  const QPointF global(widget.mapToGlobal(position));
  QMouseEvent press(QEvent::MouseButtonPress, local, global, Qt::LeftButton, Qt::LeftButton, {});
  QCoreApplication::sendEvent(&widget, &press);
  QMouseEvent release(QEvent::MouseButtonRelease, local, global, Qt::LeftButton, {}, {});
  QCoreApplication::sendEvent(&widget, &release);
}

} // namespace driftmark::test
