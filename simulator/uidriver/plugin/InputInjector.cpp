// How a gesture becomes a sequence of events of the window system.

#include "uidriver/plugin/InputInjector.h"

#include <QGuiApplication>
#include <QPointer>
#include <QWindow>
#include <QtTest/qtestkeyboard.h>
#include <QtTest/qtestmouse.h>

namespace icloud {
namespace {

using Window = QPointer<QWindow>;

Window windowOf(const QWidget& widget) {
  return widget.window()->windowHandle();
}

QPoint inWindow(const QWidget& widget, QPoint point) {
  return widget.window()->mapFromGlobal(widget.mapToGlobal(point));
}

InputInjector::Callback mousePress(const Window& window, Qt::MouseButton button, QPoint at) {
  return [=] {
    if (window)
      QTest::mousePress(window.data(), button, {}, at);
  };
}

InputInjector::Callback mouseRelease(const Window& window, Qt::MouseButton button, QPoint at) {
  return [=] {
    if (window)
      QTest::mouseRelease(window.data(), button, {}, at);
  };
}

InputInjector::Callback mouseMove(const Window& window, QPoint to) {
  return [=] {
    if (window)
      QTest::mouseMove(window.data(), to);
  };
}

// The focus window may change between two keys.
InputInjector::Callback keyEvent(QTest::KeyAction action, const Window& fallback, Qt::Key key,
                                 const QString& text, Qt::KeyboardModifiers modifiers) {
  return [=] {
    QWindow* const focused = QGuiApplication::focusWindow();
    if (QWindow* const window = focused != nullptr ? focused : fallback.data())
      QTest::sendKeyEvent(action, window, key, text, modifiers);
  };
}

} // namespace

void InputInjector::click(QWidget& widget, QPoint point, Qt::MouseButton button,
                          Callback beforeLast) {
  const Window window = windowOf(widget);
  const QPoint at = inWindow(widget, point);
  perform({mouseMove(window, at), mousePress(window, button, at), mouseRelease(window, button, at)},
          std::move(beforeLast));
}

// A menu ignores a click unless the pointer has moved since the menu opened.
void InputInjector::choose(QMenu& menu, QAction& entry, Callback beforeLast) {
  constexpr int moves = 8;
  const Window window = windowOf(menu);
  const QRect row = menu.actionGeometry(&entry);
  std::vector<Callback> events;
  for (int i = moves; i >= 0; --i)
    events.push_back(mouseMove(window, row.center() - QPoint(i, 0)));
  events.push_back(mousePress(window, Qt::LeftButton, row.center()));
  events.push_back(mouseRelease(window, Qt::LeftButton, row.center()));
  perform(std::move(events), std::move(beforeLast));
}

void InputInjector::press(QKeyCombination key, QWidget& fallback, Callback beforeLast) {
  const Window window = windowOf(fallback);
  const QString text = QChar(QTest::keyToAscii(key.key()));
  perform({keyEvent(QTest::Press, window, key.key(), text, key.keyboardModifiers()),
           keyEvent(QTest::Release, window, key.key(), text, key.keyboardModifiers())},
          std::move(beforeLast));
}

void InputInjector::type(const QString& text, QWidget& fallback, Callback beforeLast) {
  const Window window = windowOf(fallback);
  std::vector<Callback> events;
  for (const char32_t character : text.toUcs4()) {
    const Qt::Key key =
        character < 0x80 ? QTest::asciiToKey(static_cast<char>(character)) : Qt::Key_unknown;
    const QString typed = QString::fromUcs4(&character, 1);
    events.push_back(keyEvent(QTest::Press, window, key, typed, {}));
    events.push_back(keyEvent(QTest::Release, window, key, typed, {}));
  }
  perform(std::move(events), std::move(beforeLast));
}

void InputInjector::perform(std::vector<Callback> events, Callback beforeLast) {
  if (events.empty()) {
    beforeLast();
    return;
  }
  const auto gesture = std::make_shared<Gesture>(Gesture{std::move(events), std::move(beforeLast)});
  performNext(gesture, 0);
}

void InputInjector::performNext(const std::shared_ptr<Gesture>& gesture, std::size_t index) {
  if (index + 1 < gesture->events.size())
    QMetaObject::invokeMethod(
        this, [=, this] { performNext(gesture, index + 1); }, Qt::QueuedConnection);
  else
    gesture->beforeLast();
  gesture->events[index]();
}

} // namespace icloud
