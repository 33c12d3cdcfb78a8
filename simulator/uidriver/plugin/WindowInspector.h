#pragma once

#include <functional>

#include <QAction>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QWidget>

class QAbstractButton;
class QMenu;

namespace icloud {

/// Knows the program's visible top-level windows and finds widgets in them.
class WindowInspector : public QObject {
public:
  /// `notice` is called from the event loop when a window was shown or hidden.
  explicit WindowInspector(std::function<void(const QJsonObject& notice)> notice);

  /// The visible windows, the topmost last.
  QList<QWidget*> windows() const;

  /// The visible window with that number; nullptr when there is none.
  QWidget* window(int number) const;

  /// The window that gets the keyboard: an open popup or a modal window, else the topmost.
  QWidget* foremost() const;

  /// The button with that title, searched from the topmost window down to the first modal one.
  QAbstractButton* button(const QString& title) const;

  /// The visible widget with that object name; nullptr when there is none.
  QWidget* widget(const QString& objectName) const;

  /// The entry with that text in an open menu, searched from the topmost menu down.
  struct Entry {
    QMenu* menu = nullptr;
    QAction* action = nullptr;
  };
  Entry entry(const QString& text) const;

  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  QList<QWidget*> windowsFromTop() const;
  void noteShown(QWidget& window);
  void noteHidden(QWidget& window);

  std::function<void(const QJsonObject&)> notice_;
  QList<QPointer<QWidget>> stacking_; // all windows that were shown, the topmost last
};

} // namespace icloud
