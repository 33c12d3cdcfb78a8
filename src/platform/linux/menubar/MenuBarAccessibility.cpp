// What screen readers read about the strip and of the rows of its menu.

#include "platform/linux/menubar/DropDownMenu.h"
#include "platform/linux/menubar/MenuBarStrip.h"

#include <algorithm>

#include <QAccessibleObject>
#include <QAccessibleWidget>
#include <QAction>
#include <QMenu>

namespace driftmark {

namespace {

/// A strip: described as a menu button.
class StripAccessible final : public QAccessibleWidget {
public:
  explicit StripAccessible(MenuBarStrip* strip)
      : QAccessibleWidget(strip, QAccessible::ButtonMenu), strip_(strip) {}

  QStringList actionNames() const override { return {showMenuAction(), pressAction()}; }
  void doAction(const QString& name) override {
    if (name == showMenuAction() || name == pressAction())
      strip_->press();
    else
      QAccessibleWidget::doAction(name);
  }
  QAccessible::State state() const override {
    QAccessible::State state = QAccessibleWidget::state();
    state.hasPopup = true;
    state.expanded = strip_->isHighlighted();
    return state;
  }

  int childCount() const override { return openMenu() != nullptr ? 1 : 0; }
  QAccessibleInterface* child(int index) const override {
    return index == 0 ? QAccessible::queryAccessibleInterface(openMenu()) : nullptr;
  }
  int indexOfChild(const QAccessibleInterface* child) const override {
    return child != nullptr && child->object() != nullptr && child->object() == openMenu() ? 0 : -1;
  }

private:
  /// Qt lists menus neither among the children of a widget nor among the application's windows.
  QMenu* openMenu() const {
    const auto menus = strip_->findChildren<QMenu*>(QString(), Qt::FindDirectChildrenOnly);
    const auto open = std::ranges::find_if(menus, &QMenu::isVisible);
    return open != menus.end() ? *open : nullptr;
  }

  MenuBarStrip* const strip_;
};

/// A row of a menu: named by its whole title, which is the action's data(), whatever is drawn, and
/// described by its tool tip, such as the path of a file.
class RowAccessible final : public QAccessibleObject, public QAccessibleActionInterface {
public:
  /// The menu holds the action and outlives it.
  RowAccessible(QAction& action, QMenu& menu);

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

RowAccessible::RowAccessible(QAction& action, QMenu& menu)
    : QAccessibleObject(&action), action_(action), menu_(menu) {}

QAccessibleInterface* RowAccessible::parent() const {
  return QAccessible::queryAccessibleInterface(&menu_);
}

QAccessible::Role RowAccessible::role() const {
  return action_.isSeparator() ? QAccessible::Separator : QAccessible::MenuItem;
}

QAccessible::State RowAccessible::state() const {
  QAccessible::State state;
  state.invisible = !menu_.isVisible();
  state.disabled = action_.isSeparator() || !action_.isEnabled();
  state.focused = menu_.activeAction() == &action_;
  state.checkable = action_.isCheckable();
  state.checked = action_.isChecked();
  return state;
}

QString RowAccessible::text(QAccessible::Text text) const {
  switch (text) {
  case QAccessible::Name:
    return action_.data().toString();
  case QAccessible::Description:
    return action_.whatsThis();
  case QAccessible::Accelerator:
    return action_.shortcut().toString(QKeySequence::NativeText);
  default:
    return {};
  }
}

QRect RowAccessible::rect() const {
  const QRect place = menu_.actionGeometry(&action_);
  return {menu_.mapToGlobal(place.topLeft()), place.size()};
}

void* RowAccessible::interface_cast(QAccessible::InterfaceType type) {
  return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                              : nullptr;
}

QStringList RowAccessible::actionNames() const {
  return action_.isSeparator() ? QStringList() : QStringList(pressAction());
}

void RowAccessible::doAction(const QString& name) {
  if (name != pressAction() || !action_.isEnabled())
    return;
  menu_.close();
  action_.trigger();
}

QStringList RowAccessible::keyBindingsForAction(const QString& name) const {
  const QString keys = text(QAccessible::Accelerator);
  return name == pressAction() && !keys.isEmpty() ? QStringList(keys) : QStringList();
}

QAccessibleInterface* accessibleFor(const QString& /*className*/, QObject* object) {
  if (auto* const strip = dynamic_cast<MenuBarStrip*>(object))
    return new StripAccessible(strip);
  auto* const action = dynamic_cast<QAction*>(object);
  auto* const menu = dynamic_cast<DropDownMenu*>(action != nullptr ? action->parent() : nullptr);
  return menu != nullptr ? new RowAccessible(*action, *menu) : nullptr;
}

} // namespace

void installMenuBarAccessibility() {
  QAccessible::installFactory(accessibleFor);
}

} // namespace driftmark
