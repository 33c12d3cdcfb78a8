#pragma once

#include <QAccessibleObject>

class QAction;
class QMenu;

namespace driftmark {

/// An entry of a menu for screen readers: its whole title as it is, whatever is drawn of that. Main
/// thread only.
class EntryAccessible final : public QAccessibleObject, public QAccessibleActionInterface {
public:
  /// The title is the action's data(). The menu, which holds the action, outlives it.
  EntryAccessible(QAction& action, QMenu& menu);

  QAccessibleInterface* parent() const override;
  int childCount() const override { return 0; }
  QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
  int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }

  QAccessible::Role role() const override;
  QAccessible::State state() const override;
  QString text(QAccessible::Text text) const override;
  QRect rect() const override;
  void* interface_cast(QAccessible::InterfaceType type) override;

  QStringList actionNames() const override;
  void doAction(const QString& name) override;
  QStringList keyBindingsForAction(const QString& name) const override;

private:
  QAction& action_;
  QMenu& menu_;
};

} // namespace driftmark
