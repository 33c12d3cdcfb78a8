#pragma once

#include <QJsonObject>
#include <QString>

class QAction;
class QWidget;

namespace icloud {

/// A number that is unique in this program and the same for as long as the window exists.
int windowNumber(QWidget& window);

/// What a user sees of a window: kind, title, geometry, texts and buttons from the top left to the
/// bottom right, and the entries of a menu.
QJsonObject describeWindow(QWidget& window);

/// The text of a menu entry as it is drawn, without the shortcut.
QString entryText(const QAction& action);

/// A title as it is drawn, without the marks of its mnemonic.
QString withoutMnemonic(const QString& title);

} // namespace icloud
