// How the menu is laid out and opened, and how its rows are chosen.

#include "platform/linux/menubar/DropDownMenu.h"

#include "platform/linux/menubar/ElidedText.h"
#include "platform/linux/menubar/MenuBarStrip.h"
#include "support/Weakly.h"

#include <algorithm>

#include <QAccessible>
#include <QApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QProxyStyle>
#include <QScreen>
#include <QStyleOption>

namespace driftmark {

namespace {

constexpr int symbolSize = 16;
constexpr int edge = 4; ///< above the first row and below the last

QKeySequence shortcut(const std::string& keyEquivalent) {
  return {QStringLiteral("Ctrl+") + QString::fromStdString(keyEquivalent).toUpper()};
}

/// Escapes the character that would start a mnemonic.
QString withoutMnemonic(QString text) {
  return text.replace(u'&', QStringLiteral("&&"));
}

QColor between(const QColor& one, const QColor& other, float part) {
  const auto mixed = [part](float from, float to) { return from + (to - from) * part; };
  return QColor::fromRgbF(mixed(one.redF(), other.redF()), mixed(one.greenF(), other.greenF()),
                          mixed(one.blueF(), other.blueF()));
}

/// Draws a check mark in the manner of the symbols.
void drawCheckMark(const QStyleOption& option, QPainter& painter) {
  const bool isSelected = (option.state & QStyle::State_Selected) != 0;
  const QPointF centre = QRectF(option.rect).center();
  const QPolygonF mark{
      {centre + QPointF(-4.5, 0.5), centre + QPointF(-1.5, 3.5), centre + QPointF(4.5, -3.5)}};
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(option.palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text),
                      1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPolyline(mark);
  painter.restore();
}

/// The same in the middle square, in the application's palette. The style keeps an image of an
/// arrow for every size and every palette, and each menu has a palette of its own.
QStyleOption squared(const QStyleOption& option) {
  QStyleOption square = option;
  const int side = std::min(option.rect.width(), option.rect.height());
  square.rect =
      QStyle::alignedRect(option.direction, Qt::AlignCenter, QSize(side, side), option.rect);
  square.palette = QApplication::palette();
  return square;
}

/// The application's style, except that a menu that is too high scrolls and a check mark has no
/// box.
class MenuStyle final : public QProxyStyle {
public:
  explicit MenuStyle(QObject* parent) : QProxyStyle(QApplication::style()->name()) {
    setParent(parent);
  }

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
    if (element == PE_IndicatorCheckBox) {
      drawCheckMark(*option, *painter);
    } else if (element == PE_IndicatorArrowUp || element == PE_IndicatorArrowDown) {
      const QStyleOption square = squared(*option);
      QProxyStyle::drawPrimitive(element, &square, painter, widget);
    } else {
      QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
  }

  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* returnData) const override {
    return hint == SH_Menu_Scrollable ? 1
                                      : QProxyStyle::styleHint(hint, option, widget, returnData);
  }
};

/// `palette` with a readable grey, without relief, for labels. These are disabled items.
QPalette withReadableLabels(QPalette palette) {
  const QColor paper = palette.color(QPalette::Active, QPalette::Base);
  const QColor grey = between(paper, palette.color(QPalette::Active, QPalette::Text), 0.58F);
  for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
    palette.setColor(QPalette::Disabled, role, grey);
  palette.setColor(QPalette::Disabled, QPalette::Light, paper);
  return palette;
}

} // namespace

DropDownMenu::DropDownMenu(Menu items, SymbolImages& images, QWidget& owner)
    : QMenu(&owner), owner_(owner), items_(std::make_shared<const Menu>(std::move(items))) {
  installMenuBarAccessibility();
  setObjectName(QStringLiteral("DropDownMenu"));
  setStyle(new MenuStyle(this));
  setPalette(withReadableLabels(palette()));
  setContentsMargins(0, edge, 0, edge);
  rows_.reserve(items_->size());
  for (const MenuItem& item : *items_) {
    QAction* const action = makeAction(item, images);
    addAction(action);
    connect(action, &QAction::triggered, this, [this, index = rows_.size()] { choose(index); });
    rows_.push_back({action});
    draw(rows_.back());
  }
  if (rows_.empty())
    return;
  // The width that the style adds to a title can only be measured with titles.
  const qreal around = sizeHint().width() - std::ranges::max(rows_, {}, &Row::width).width;
  maxTitleWidth_ = std::min(maxWidth, owner_.screen()->availableGeometry().width()) - around;
  std::ranges::for_each(rows_, [this](Row& row) { draw(row); });
}

QAction* DropDownMenu::makeAction(const MenuItem& item, SymbolImages& images) {
  auto* const action = new QAction(this);
  if (item.kind == MenuItem::Kind::separator) {
    action->setSeparator(true);
    return action;
  }
  action->setData(QString::fromStdString(item.title));
  action->setToolTip(QString::fromStdString(item.toolTip));
  action->setEnabled(item.kind == MenuItem::Kind::command && item.action != nullptr);
  action->setCheckable(item.isChecked);
  action->setChecked(item.isChecked);
  if (!item.keyEquivalent.empty())
    action->setShortcut(shortcut(item.keyEquivalent));
  if (item.symbol)
    action->setIcon(icon(item.symbol->name, images));
  return action;
}

QIcon DropDownMenu::icon(const std::string& symbol, SymbolImages& images) const {
  QIcon icon;
  const auto add = [&](QIcon::Mode mode, QPalette::ColorGroup group, QPalette::ColorRole role) {
    const QPixmap image =
        images.image(symbol, palette().color(group, role), symbolSize, owner_.devicePixelRatioF());
    if (!image.isNull())
      icon.addPixmap(image, mode);
  };
  add(QIcon::Normal, QPalette::Active, QPalette::Text);
  add(QIcon::Active, QPalette::Active, QPalette::HighlightedText);
  add(QIcon::Disabled, QPalette::Disabled, QPalette::Text);
  return icon;
}

/// Sets the text that is drawn for the row's title.
void DropDownMenu::draw(Row& row) {
  if (row.action->isSeparator())
    return;
  const QFontMetricsF metrics(font(), this);
  const ElidedLine line = elidedLine(row.action->data().toString(), metrics, maxTitleWidth_);
  row.action->setText(withoutMnemonic(withIsolatedRightToLeft(line.text)));
  row.isElided = line.isElided;
  row.width = metrics.horizontalAdvance(line.text);
}

void DropDownMenu::retitle(MenuItem::Tag tag, const std::string& title) {
  const auto item = std::ranges::find(*items_, tag, &MenuItem::tag);
  if (tag == 0 || item == items_->end())
    return;
  Row& row = rows_[static_cast<std::size_t>(item - items_->begin())];
  const QString text = QString::fromStdString(title);
  if (text == row.action->data().toString())
    return;
  const QRect before = geometry();
  row.action->setData(text);
  draw(row);
  QAccessibleEvent renamed(row.action, QAccessible::NameChanged);
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
  const auto row = std::ranges::find_if(rows_, [&pressed](const Row& candidate) {
    return candidate.action->isEnabled() && candidate.action->shortcut() == pressed;
  });
  if (row == rows_.end() || pressed.isEmpty()) {
    QMenu::keyPressEvent(event);
    showActiveRow();
    return;
  }
  close();
  row->action->trigger();
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
  const auto row = std::ranges::find(rows_, actionAt(event.pos()), &Row::action);
  QStringList paragraphs;
  if (row != rows_.end()) {
    const MenuItem& item = (*items_)[static_cast<std::size_t>(row - rows_.begin())];
    if (row->isElided)
      paragraphs += row->action->data().toString();
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
