#pragma once

#include "platform/linux/looks/SymbolImages.h"
#include "platform/linux/menubar/MenuRow.h"
#include "ports/Menu.h"

#include <memory>
#include <string>
#include <vector>

#include <QMenu>
#include <QRect>

class QHelpEvent;

namespace driftmark {

class MenuStyle;

/// A menu of MenuRows, between 220 and 440 points wide and no wider than the screen. Only what a
/// short name and its whole detail need makes it wider. Its shortcuts work while it is open. The
/// action of a chosen row runs from the event loop after the menu has closed, unless the menu was
/// destroyed by then. Main thread only.
class DropDownMenu final : public QMenu {
public:
  /// Uses the colours and the resolution of `owner`, which outlives it.
  DropDownMenu(Menu items, SymbolImages& images, QWidget& owner);

  /// Changes the title of the first item with that tag.
  void retitle(MenuItem::Tag tag, const std::string& title);

  /// Opens the menu under its owner, aligned with the owner's right end. A menu that is higher than
  /// the screen scrolls. While it is open, a click on the owner only closes it.
  void open();

  /// The row of an item.
  const MenuRow& row(std::size_t index) const { return *rows_[index]; }

protected:
  bool event(QEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void initStyleOption(QStyleOptionMenuItem* option, const QAction* action) const override;

private:
  void fit();
  void choose(std::size_t index);
  void showActiveRow();
  bool showToolTip(const QHelpEvent& event);
  QRect ownerArea() const;

  QWidget& owner_;
  const std::shared_ptr<const Menu> items_;
  MenuStyle* style_ = nullptr;
  std::vector<MenuRow*> rows_; ///< one for each item
};

} // namespace driftmark
