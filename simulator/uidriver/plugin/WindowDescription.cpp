// What a window's description says of it.

#include "uidriver/plugin/WindowDescription.h"

#include <algorithm>
#include <optional>

#include <QAbstractButton>
#include <QAccessible>
#include <QAction>
#include <QDialog>
#include <QFileDialog>
#include <QJsonArray>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextDocumentFragment>
#include <QTextEdit>

namespace icloud {
namespace {

constexpr const char* numberProperty = "icloudWindowNumber";

// A modal dialog is an alert. A file dialog is none, although it is modal.
bool isAlert(const QWidget& window) {
  return qobject_cast<const QDialog*>(&window) != nullptr && window.isModal() &&
         qobject_cast<const QFileDialog*>(&window) == nullptr;
}

QString kindOf(const QWidget& window) {
  if (isAlert(window))
    return "alert";
  if (qobject_cast<const QMenu*>(&window) != nullptr)
    return "menu";
  if (window.windowType() == Qt::ToolTip)
    return "tooltip";
  return qobject_cast<const QDialog*>(&window) != nullptr ? "dialog" : "window";
}

QJsonArray geometryOf(const QWidget& widget) {
  const QPoint corner = widget.mapToGlobal(QPoint(0, 0));
  return {corner.x(), corner.y(), widget.width(), widget.height()};
}

QString labelText(const QLabel& label) {
  const bool isMarkup = label.textFormat() == Qt::RichText ||
                        (label.textFormat() == Qt::AutoText && Qt::mightBeRichText(label.text()));
  return isMarkup ? QTextDocumentFragment::fromHtml(label.text()).toPlainText() : label.text();
}

std::optional<QString> textOf(const QWidget& widget) {
  if (const auto* const label = qobject_cast<const QLabel*>(&widget))
    return labelText(*label);
  if (const auto* const line = qobject_cast<const QLineEdit*>(&widget))
    return line->displayText();
  if (const auto* const edit = qobject_cast<const QTextEdit*>(&widget))
    return edit->toPlainText();
  if (const auto* const edit = qobject_cast<const QPlainTextEdit*>(&widget))
    return edit->toPlainText();
  return std::nullopt;
}

// Orders widgets from top to bottom, and in a row from left to right.
bool comesBefore(const QWidget* one, const QWidget* other) {
  const QPoint left = one->mapToGlobal(QPoint(0, 0));
  const QPoint right = other->mapToGlobal(QPoint(0, 0));
  return left.y() != right.y() ? left.y() < right.y() : left.x() < right.x();
}

QList<QWidget*> visibleWidgets(const QWidget& window) {
  QList<QWidget*> widgets = window.findChildren<QWidget*>();
  widgets.removeIf(
      [&](QWidget* widget) { return !widget->isVisible() || widget->window() != &window; });
  std::stable_sort(widgets.begin(), widgets.end(), comesBefore);
  return widgets;
}

QJsonObject describeButton(const QAbstractButton& button) {
  const auto* const push = qobject_cast<const QPushButton*>(&button);
  return {{"title", withoutMnemonic(button.text())},
          {"isDefault", push != nullptr && push->isDefault()},
          {"isEnabled", button.isEnabled()},
          {"isChecked", button.isChecked()}};
}

QJsonObject describeWidget(QWidget& widget) {
  QString name = widget.accessibleName();
  if (QAccessibleInterface* const accessible = QAccessible::queryAccessibleInterface(&widget))
    name = accessible->text(QAccessible::Name);
  return {{"name", widget.objectName()},    {"class", widget.metaObject()->className()},
          {"geometry", geometryOf(widget)}, {"isEnabled", widget.isEnabled()},
          {"toolTip", widget.toolTip()},    {"accessibleName", name}};
}

QJsonObject describeEntry(const QAction& action) {
  return {{"text", entryText(action)},
          {"isEnabled", action.isEnabled()},
          {"isChecked", action.isChecked()},
          {"isSeparator", action.isSeparator()},
          {"hasSubmenu", action.menu() != nullptr},
          {"shortcut", action.shortcut().toString(QKeySequence::PortableText)},
          {"toolTip", action.toolTip()}};
}

QJsonArray describeEntries(const QWidget& window) {
  QJsonArray entries;
  if (const auto* const menu = qobject_cast<const QMenu*>(&window))
    for (const QAction* const action : menu->actions())
      if (action->isVisible())
        entries.append(describeEntry(*action));
  return entries;
}

} // namespace

int windowNumber(QWidget& window) {
  static int last = 0;
  const QVariant known = window.property(numberProperty);
  if (known.isValid())
    return known.toInt();
  window.setProperty(numberProperty, ++last);
  return last;
}

QJsonObject describeWindow(QWidget& window) {
  QJsonArray texts, buttons, widgets;
  if (!window.objectName().isEmpty())
    widgets.append(describeWidget(window));
  for (QWidget* const widget : visibleWidgets(window)) {
    if (const auto text = textOf(*widget); text && !text->isEmpty())
      texts.append(*text);
    if (const auto* const button = qobject_cast<const QAbstractButton*>(widget))
      buttons.append(describeButton(*button));
    if (!widget->objectName().isEmpty())
      widgets.append(describeWidget(*widget));
  }
  return {{"number", windowNumber(window)},
          {"class", window.metaObject()->className()},
          {"kind", kindOf(window)},
          {"title", window.windowTitle()},
          {"geometry", geometryOf(window)},
          {"isModal", window.isModal()},
          {"isActive", window.isActiveWindow()},
          {"texts", texts},
          {"buttons", buttons},
          {"widgets", widgets},
          {"entries", describeEntries(window)}};
}

QString entryText(const QAction& action) {
  return withoutMnemonic(action.text().section('\t', 0, 0));
}

QString withoutMnemonic(const QString& title) {
  QString drawn;
  for (qsizetype i = 0; i < title.size(); ++i) {
    if (title[i] == '&' && ++i == title.size())
      break;
    drawn.append(title[i]);
  }
  return drawn;
}

} // namespace icloud
