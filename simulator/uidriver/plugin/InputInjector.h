#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QKeyCombination>
#include <QMenu>
#include <QObject>
#include <QPoint>
#include <QString>
#include <QWidget>

namespace icloud {

/// Moves, presses and lets go, one event at a time, each from the event loop: what one of them
/// opens may run a loop of its own. `onLast` is called right before the last event of a gesture is
/// given to the program, so that whatever comes next over the same way comes after it.
class InputInjector : public QObject {
public:
  using Callback = std::function<void()>;

  /// Clicks with `button` at a point of `widget`.
  void click(QWidget& widget, QPoint point, Qt::MouseButton button, Callback onLast);

  /// Moves onto an entry of an open menu and clicks there.
  void choose(QMenu& menu, QAction& entry, Callback onLast);

  /// Presses a key in the window that has the keyboard, else in `fallback`.
  void press(QKeyCombination key, QWidget& fallback, Callback onLast);

  /// Types `text`, a key for each character.
  void type(const QString& text, QWidget& fallback, Callback onLast);

private:
  struct Gesture {
    std::vector<Callback> events;
    Callback onLast;
  };

  void perform(std::vector<Callback> events, Callback onLast);
  void performNext(const std::shared_ptr<Gesture>& gesture, std::size_t index);
};

} // namespace icloud
