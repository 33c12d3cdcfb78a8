// Which windows are visible and in which order, and which widget a request means.

#include "uidriver/plugin/WindowInspector.h"

#include "uidriver/plugin/WindowDescription.h"

#include <algorithm>

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QMenu>

namespace icloud {
namespace {

bool isVisibleWindow(const QWidget& widget) {
  return widget.isVisible() && widget.isWindow() && widget.windowType() != Qt::Desktop;
}

bool isModal(const QWidget& window) {
  return window.isModal() || window.windowType() == Qt::Popup;
}

template <typename Widget> Widget* findVisible(const QList<Widget*>& widgets, const auto& matches) {
  const auto found = std::find_if(widgets.begin(), widgets.end(), [&](Widget* widget) {
    return widget->isVisible() && matches(*widget);
  });
  return found == widgets.end() ? nullptr : *found;
}

} // namespace

WindowInspector::WindowInspector(std::function<void(const QJsonObject&)> notice)
    : notice_(std::move(notice)) {
  for (QWidget* const window : QApplication::topLevelWidgets())
    stacking_.append(window);
  qApp->installEventFilter(this);
}

QList<QWidget*> WindowInspector::windows() const {
  QList<QWidget*> visible;
  for (const auto& window : stacking_)
    if (window && isVisibleWindow(*window))
      visible.append(window);
  return visible;
}

QList<QWidget*> WindowInspector::windowsFromTop() const {
  QList<QWidget*> visible = windows();
  std::reverse(visible.begin(), visible.end());
  return visible;
}

QWidget* WindowInspector::window(int number) const {
  return findVisible(windows(), [&](QWidget& window) { return windowNumber(window) == number; });
}

QWidget* WindowInspector::foremost() const {
  if (QWidget* const popup = QApplication::activePopupWidget())
    return popup;
  if (QWidget* const modal = QApplication::activeModalWidget())
    return modal;
  const auto visible = windows();
  return visible.isEmpty() ? nullptr : visible.last();
}

QAbstractButton* WindowInspector::button(const QString& title) const {
  for (QWidget* const window : windowsFromTop()) {
    auto* const found =
        findVisible(window->findChildren<QAbstractButton*>(), [&](const auto& button) {
          return button.window() == window && withoutMnemonic(button.text()) == title;
        });
    if (found != nullptr || isModal(*window))
      return found;
  }
  return nullptr;
}

QWidget* WindowInspector::widget(const QString& objectName) const {
  for (QWidget* const window : windowsFromTop()) {
    if (window->objectName() == objectName)
      return window;
    if (QWidget* const found = findVisible(window->findChildren<QWidget*>(objectName),
                                           [](const QWidget&) { return true; }))
      return found;
  }
  return nullptr;
}

WindowInspector::Entry WindowInspector::entry(const QString& text) const {
  for (QWidget* const window : windowsFromTop()) {
    auto* const menu = qobject_cast<QMenu*>(window);
    if (menu == nullptr)
      continue;
    for (QAction* const action : menu->actions())
      if (action->isVisible() && !action->isSeparator() && entryText(*action) == text)
        return {menu, action};
  }
  return {};
}

bool WindowInspector::eventFilter(QObject* watched, QEvent* event) {
  if (!watched->isWidgetType())
    return false;
  auto& widget = static_cast<QWidget&>(*watched);
  if (!widget.isWindow())
    return false;
  if (event->type() == QEvent::Show)
    noteShown(widget);
  else if (event->type() == QEvent::WindowActivate && stacking_.removeOne(&widget))
    stacking_.append(&widget);
  else if (event->type() == QEvent::Hide)
    noteHidden(widget);
  return false;
}

// A window has its geometry and its contents only after the event was handled, so the notice waits
// for the event loop.
void WindowInspector::noteShown(QWidget& window) {
  stacking_.removeIf([&](const auto& known) { return !known || known == &window; });
  stacking_.append(&window);
  const auto sendNotice = [this, shown = QPointer<QWidget>(&window)] {
    if (shown && isVisibleWindow(*shown))
      notice_({{"notice", "shown"}, {"window", describeWindow(*shown)}});
  };
  QMetaObject::invokeMethod(this, sendNotice, Qt::QueuedConnection);
}

void WindowInspector::noteHidden(QWidget& window) {
  const auto sendNotice = [this, number = windowNumber(window)] {
    notice_({{"notice", "hidden"}, {"number", number}});
  };
  QMetaObject::invokeMethod(this, sendNotice, Qt::QueuedConnection);
}

} // namespace icloud
