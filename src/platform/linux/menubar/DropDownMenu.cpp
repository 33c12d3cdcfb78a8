// How the menu is laid out and opened, and how its rows are chosen.

#include "platform/linux/menubar/DropDownMenu.h"

#include "platform/linux/looks/Look.h"
#include "platform/linux/menubar/ElidedText.h"
#include "platform/linux/menubar/MenuBarStrip.h"
#include "platform/linux/menubar/MenuStyle.h"
#include "platform/linux/menubar/X11Display.h"
#include "support/Weakly.h"

#include <algorithm>
#include <cmath>

#include <QAccessible>
#include <QCoreApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>
#include <QStyleOption>

namespace driftmark {

namespace {

// In points.
constexpr qreal minWidth = 220;
constexpr qreal usualMaxWidth = 440;
constexpr qreal minNameWidth = 90;

/// Whether windows can have transparent parts.
bool canBlendWindows() {
  const auto display = X11Display::current();
  return !display || display->isComposited();
}

} // namespace

DropDownMenu::DropDownMenu(Menu items, SymbolImages& images, QWidget& owner)
    : QMenu(&owner), owner_(owner), items_(std::make_shared<const Menu>(std::move(items))) {
  installMenuBarAccessibility();
  setObjectName(QStringLiteral("DropDownMenu"));
  const bool isRounded = canBlendWindows();
  setAttribute(Qt::WA_TranslucentBackground, isRounded);
  style_ = new MenuStyle(images, isRounded, this);
  setStyle(style_);
  rows_.reserve(items_->size());
  for (const MenuItem& item : *items_) {
    auto* const row = new MenuRow(item, this);
    addAction(row);
    connect(row, &QAction::triggered, this, [this, index = rows_.size()] { choose(index); });
    rows_.push_back(row);
  }
  setMinimumWidth(
      std::min(Look(palette(), font()).length(minWidth), owner_.screen()->availableSize().width()));
  fit();
}

/// The option leads the style to the row.
void DropDownMenu::initStyleOption(QStyleOptionMenuItem* option, const QAction* action) const {
  QMenu::initStyleOption(option, action);
  const auto row = std::ranges::find(rows_, action);
  option->styleObject = row != rows_.end() ? *row : nullptr;
}

/// Shortens the titles to the widest that the menu may be.
void DropDownMenu::fit() {
  const Look look(palette(), font());
  const int minName = look.length(minNameWidth);
  const auto metrics = [this](const MenuRow& row) {
    return QFontMetricsF(MenuStyle::fontOf(row, font()), this);
  };
  int longestShortcut = 0;
  for (const MenuRow* const row : rows_) {
    const QString shortcut = row->shortcut().toString(QKeySequence::NativeText);
    longestShortcut = std::max(longestShortcut, fontMetrics().horizontalAdvance(shortcut));
  }
  style_->setShortcutWidth(longestShortcut);
  int width = look.length(usualMaxWidth);
  for (const MenuRow* const row : rows_)
    width = std::max(width, static_cast<int>(std::ceil(row->neededWidth(metrics(*row), minName))) +
                                style_->widthAround(*row, look));
  width = std::min(width, owner_.screen()->availableSize().width());
  for (MenuRow* const row : rows_)
    row->fit(metrics(*row), width - style_->widthAround(*row, look), minName);
}

void DropDownMenu::retitle(MenuItem::Tag tag, const std::string& title) {
  const auto item = std::ranges::find(*items_, tag, &MenuItem::tag);
  if (tag == 0 || item == items_->end())
    return;
  MenuRow* const row = rows_[static_cast<std::size_t>(item - items_->begin())];
  const QString text = QString::fromStdString(title);
  if (text == row->data().toString())
    return;
  const QRect before = geometry();
  row->setTitle(text);
  fit();
  QAccessibleEvent renamed(row, QAccessible::NameChanged);
  QAccessible::updateAccessibility(&renamed);
  if (isVisible()) // the style has changed its width, and its height to that of all rows
    setGeometry(before.right() + 1 - width(), before.top(), width(), before.height());
}

void DropDownMenu::open() {
  const QRect area = ownerArea();
  popup(QPoint(area.right() + 1 - sizeHint().width(), area.bottom() + 1));
}

/// Qt moves a menu that is too high over its owner. Shortens it instead.
void DropDownMenu::showEvent(QShowEvent* event) {
  const int top = ownerArea().bottom() + 1;
  if (geometry().top() < top)
    setGeometry(x(), top, width(), geometry().bottom() + 1 - top);
  QMenu::showEvent(event);
}

/// The open menu receives all keys, so it handles shortcuts itself.
void DropDownMenu::keyPressEvent(QKeyEvent* event) {
  const QKeySequence pressed(event->keyCombination());
  const auto row = std::ranges::find_if(rows_, [&pressed](const MenuRow* candidate) {
    return candidate->isEnabled() && candidate->shortcut() == pressed;
  });
  if (row == rows_.end() || pressed.isEmpty()) {
    QMenu::keyPressEvent(event);
    showActiveRow();
    return;
  }
  close();
  (*row)->trigger();
}

/// Scrolls to the row that a key selected. The style does not always do so.
void DropDownMenu::showActiveRow() {
  QAction* const active = activeAction();
  if (active != nullptr && !rect().contains(actionGeometry(active)))
    setActiveAction(active);
}

void DropDownMenu::mousePressEvent(QMouseEvent* event) {
  setAttribute(Qt::WA_NoMouseReplay, ownerArea().contains(event->globalPosition().toPoint()));
  QMenu::mousePressEvent(event);
}

bool DropDownMenu::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip)
    return showToolTip(*static_cast<QHelpEvent*>(event));
  return QMenu::event(event);
}

bool DropDownMenu::showToolTip(const QHelpEvent& event) {
  const auto row = std::ranges::find(rows_, actionAt(event.pos()));
  QStringList paragraphs;
  if (row != rows_.end()) {
    const MenuItem& item = (*items_)[static_cast<std::size_t>(row - rows_.begin())];
    if ((*row)->isElided())
      paragraphs += (*row)->data().toString();
    if (!item.toolTip.empty())
      paragraphs += QString::fromStdString(item.toolTip);
  }
  showPlainToolTip(event.globalPos(), paragraphs, this);
  return true;
}

void DropDownMenu::choose(std::size_t index) {
  QMetaObject::invokeMethod(
      QCoreApplication::instance(),
      [run = weakly(items_, [index](const Menu& items) { items[index].action(); })] { run(); },
      Qt::QueuedConnection);
}

QRect DropDownMenu::ownerArea() const {
  return {owner_.mapToGlobal(QPoint(0, 0)), owner_.size()};
}

} // namespace driftmark
