#include "platform/linux/menubar/EntryAccessible.h"

#include <QAction>
#include <QMenu>

namespace driftmark {

EntryAccessible::EntryAccessible(QAction& action, QMenu& menu)
    : QAccessibleObject(&action), action_(action), menu_(menu) {}

QAccessibleInterface* EntryAccessible::parent() const {
  return QAccessible::queryAccessibleInterface(&menu_);
}

QAccessible::Role EntryAccessible::role() const {
  return action_.isSeparator() ? QAccessible::Separator : QAccessible::MenuItem;
}

QAccessible::State EntryAccessible::state() const {
  QAccessible::State state;
  state.invisible = !menu_.isVisible();
  state.disabled = action_.isSeparator() || !action_.isEnabled();
  state.focused = menu_.activeAction() == &action_;
  state.checkable = action_.isCheckable();
  state.checked = action_.isChecked();
  return state;
}

QString EntryAccessible::text(QAccessible::Text text) const {
  switch (text) {
  case QAccessible::Name:
    return action_.data().toString();
  case QAccessible::Accelerator:
    return action_.shortcut().toString(QKeySequence::NativeText);
  default:
    return {};
  }
}

QRect EntryAccessible::rect() const {
  const QRect place = menu_.actionGeometry(&action_);
  return {menu_.mapToGlobal(place.topLeft()), place.size()};
}

void* EntryAccessible::interface_cast(QAccessible::InterfaceType type) {
  return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                              : nullptr;
}

QStringList EntryAccessible::actionNames() const {
  return action_.isSeparator() ? QStringList() : QStringList(pressAction());
}

void EntryAccessible::doAction(const QString& name) {
  if (name != pressAction() || !action_.isEnabled())
    return;
  menu_.close();
  action_.trigger();
}

QStringList EntryAccessible::keyBindingsForAction(const QString& name) const {
  const QString keys = text(QAccessible::Accelerator);
  return name == pressAction() && !keys.isEmpty() ? QStringList(keys) : QStringList();
}

} // namespace driftmark
