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

/// What there is to see of the program: its visible top-level windows, the topmost last.
class WindowInspector : public QObject {
public:
  /// `notice` is called from the event loop with what was shown or hidden.
  explicit WindowInspector(std::function<void(const QJsonObject& notice)> notice);

  QList<QWidget*> windows() const;
  static QJsonObject describe(QWidget& window);

  /// The window of that number; nullptr when it is not visible.
  QWidget* window(int number) const;

  /// The window that has the keyboard and the pointer for itself, or else the topmost.
  QWidget* foremost() const;

  /// The button of that title, looked for from the top down, no further than a modal window.
  QAbstractButton* button(const QString& title) const;

  /// The visible widget of that object name; nullptr when there is none.
  QWidget* widget(const QString& objectName) const;

  /// The entry of that text in an open menu, the topmost menu first, and the menu.
  struct Entry {
    QMenu* menu = nullptr;
    QAction* action = nullptr;
  };
  Entry entry(const QString& text) const;

  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  QList<QWidget*> fromTheTop() const;
  void noteShown(QWidget& window);
  void noteHidden(QWidget& window);

  std::function<void(const QJsonObject&)> notice_;
  QList<QPointer<QWidget>> stacking_;
};

} // namespace icloud
