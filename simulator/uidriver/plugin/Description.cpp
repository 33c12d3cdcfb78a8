#include "uidriver/plugin/Description.h"

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

constexpr const char* numberProperty = "icloudPersonNumber";

// An alert waits for its answer; what lets a user look for files does more than that.
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

QJsonArray placeOf(const QWidget& widget) {
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

// From the top to the bottom, and in a row from the left to the right.
bool comesBefore(const QWidget* one, const QWidget* other) {
  const QPoint left = one->mapToGlobal(QPoint(0, 0));
  const QPoint right = other->mapToGlobal(QPoint(0, 0));
  return left.y() != right.y() ? left.y() < right.y() : left.x() < right.x();
}

QList<QWidget*> visibleParts(const QWidget& window) {
  QList<QWidget*> parts = window.findChildren<QWidget*>();
  parts.removeIf([&](QWidget* part) { return !part->isVisible() || part->window() != &window; });
  std::stable_sort(parts.begin(), parts.end(), comesBefore);
  return parts;
}

QJsonObject describeButton(const QAbstractButton& button) {
  const auto* const push = qobject_cast<const QPushButton*>(&button);
  return {{"title", withoutMnemonic(button.text())},
          {"isDefault", push != nullptr && push->isDefault()},
          {"isEnabled", button.isEnabled()},
          {"isChecked", button.isChecked()}};
}

QJsonObject describePart(QWidget& part) {
  QString name = part.accessibleName();
  if (QAccessibleInterface* const accessible = QAccessible::queryAccessibleInterface(&part))
    name = accessible->text(QAccessible::Name);
  return {{"name", part.objectName()}, {"class", part.metaObject()->className()},
          {"place", placeOf(part)},    {"isEnabled", part.isEnabled()},
          {"toolTip", part.toolTip()}, {"accessibleName", name}};
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
  QJsonArray texts, buttons, parts;
  if (!window.objectName().isEmpty())
    parts.append(describePart(window));
  for (QWidget* const part : visibleParts(window)) {
    if (const auto text = textOf(*part); text && !text->isEmpty())
      texts.append(*text);
    if (const auto* const button = qobject_cast<const QAbstractButton*>(part))
      buttons.append(describeButton(*button));
    if (!part->objectName().isEmpty())
      parts.append(describePart(*part));
  }
  return {{"number", windowNumber(window)},
          {"class", window.metaObject()->className()},
          {"kind", kindOf(window)},
          {"title", window.windowTitle()},
          {"place", placeOf(window)},
          {"isModal", window.isModal()},
          {"isActive", window.isActiveWindow()},
          {"texts", texts},
          {"buttons", buttons},
          {"parts", parts},
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
