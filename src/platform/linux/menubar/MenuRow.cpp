// What of a title is drawn, and which symbol precedes it.

#include "platform/linux/menubar/MenuRow.h"

#include "platform/linux/looks/SymbolImages.h"
#include "platform/linux/menubar/ElidedText.h"

#include <algorithm>

#include <QWidget>

namespace driftmark {

namespace {

QKeySequence shortcutFor(const std::string& keyEquivalent) {
  return {QStringLiteral("Ctrl+") + QString::fromStdString(keyEquivalent).toUpper()};
}

/// Escapes the character that would start a mnemonic.
QString withoutMnemonic(QString text) {
  return text.replace(u'&', QStringLiteral("&&"));
}

std::string symbolFor(const MenuItem& item) {
  if (item.isChecked)
    return "checkmark";
  return item.symbol && SymbolImages::has(item.symbol->name) ? item.symbol->name : "";
}

} // namespace

MenuRow::MenuRow(const MenuItem& item, QObject* parent)
    : QAction(parent), isHeading_(item.kind == MenuItem::Kind::heading), symbol_(symbolFor(item)) {
  if (item.kind == MenuItem::Kind::separator) {
    setSeparator(true);
    return;
  }
  setTitle(QString::fromStdString(item.title));
  if (item.nameLength)
    nameLength_ = std::min(nameLength_,
                           QString::fromStdString(item.title.substr(0, *item.nameLength)).size());
  setToolTip(QString::fromStdString(item.toolTip));
  setWhatsThis(QString::fromStdString(item.toolTip));
  setEnabled(item.kind == MenuItem::Kind::command && item.action != nullptr);
  setCheckable(item.isChecked);
  setChecked(item.isChecked);
  if (!item.keyEquivalent.empty())
    setShortcut(shortcutFor(item.keyEquivalent));
}

void MenuRow::setTitle(const QString& title) {
  setData(title);
  nameLength_ = title.size();
}

qreal MenuRow::neededWidth(const QFontMetricsF& metrics, qreal minNameWidth) const {
  return elidedLine(wholeName(), metrics, minNameWidth).width +
         elidedLine(wholeDetail(), metrics, QWIDGETSIZE_MAX).width;
}

void MenuRow::fit(const QFontMetricsF& metrics, qreal width, qreal minNameWidth) {
  if (isSeparator())
    return;
  const qreal nameNeeded = elidedLine(wholeName(), metrics, minNameWidth).width;
  const ElidedLine detail = elidedLine(wholeDetail(), metrics, width - nameNeeded);
  const ElidedLine name = elidedLine(wholeName(), metrics, width - detail.width);
  name_ = withIsolatedRightToLeft(name.text);
  detail_ = withIsolatedRightToLeft(detail.text);
  nameWidth_ = name.width;
  detailWidth_ = detail.width;
  isElided_ = name.isElided || detail.isElided;
  setText(withoutMnemonic(name_ + detail_));
}

} // namespace driftmark
