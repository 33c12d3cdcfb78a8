#pragma once

#include <QJsonObject>
#include <QString>

class QAction;
class QWidget;

namespace icloud {

/// A number of this program's own for a window; stays the same for as long as the window exists.
int windowNumber(QWidget& window);

/// A window as a user sees it: kind, title, place, texts and buttons from the top left to the
/// bottom right, and the entries of a menu.
QJsonObject describeWindow(QWidget& window);

/// The text of a menu entry as it is drawn, without the shortcut.
QString entryText(const QAction& action);

/// A title as it is drawn, without the marks of its mnemonic.
QString withoutMnemonic(const QString& title);

} // namespace icloud
