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

/// Gives mouse and keyboard events to the program, each from the event loop, because an event may
/// open a window that runs an event loop of its own. `beforeLast` is called right before the last
/// event of a gesture, so that a request made after the reply runs after that event.
class InputInjector : public QObject {
public:
  using Callback = std::function<void()>;

  /// Clicks with `button` at a point in `widget`.
  void click(QWidget& widget, QPoint point, Qt::MouseButton button, Callback beforeLast);

  /// Moves onto an entry of an open menu and clicks there.
  void choose(QMenu& menu, QAction& entry, Callback beforeLast);

  /// Presses a key in the window that has the keyboard focus, else in `fallback`.
  void press(QKeyCombination key, QWidget& fallback, Callback beforeLast);

  /// Types `text`, one key per character, in the same window.
  void type(const QString& text, QWidget& fallback, Callback beforeLast);

private:
  struct Gesture {
    std::vector<Callback> events;
    Callback beforeLast;
  };

  void perform(std::vector<Callback> events, Callback beforeLast);
  void performNext(const std::shared_ptr<Gesture>& gesture, std::size_t index);
};

} // namespace icloud
