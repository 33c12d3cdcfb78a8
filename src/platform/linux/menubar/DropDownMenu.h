#pragma once

#include "platform/linux/menubar/SymbolImages.h"
#include "ports/Menu.h"

#include <memory>
#include <string>
#include <vector>

#include <QMenu>
#include <QRect>

class QHelpEvent;

namespace driftmark {

/// A menu drawn by the desktop's style. Its shortcuts work while it is open. The action of a chosen
/// row runs from the event loop after the menu has closed, unless the menu was destroyed by then.
/// The data() of a QAction is the item's title, its text() what is drawn. Main thread only.
class DropDownMenu final : public QMenu {
public:
  /// Uses the colours and the resolution of `owner`, which outlives it.
  DropDownMenu(Menu items, SymbolImages& images, QWidget& owner);

  /// Changes the title of the first item with that tag.
  void retitle(MenuItem::Tag tag, const std::string& title);

  /// Opens the menu under its owner, aligned with the owner's right end. A menu that is higher than
  /// the screen scrolls. While it is open, a click on the owner only closes it.
  void open();

  /// In device-independent pixels. No menu is wider than its screen either.
  static constexpr int maxWidth = 600;

protected:
  bool event(QEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;

private:
  struct Row {
    QAction* action;
    bool isElided = false; ///< whether a part of its title is left out
    qreal width = 0;       ///< of the drawn title
  };

  QAction* makeAction(const MenuItem& item, SymbolImages& images);
  QIcon icon(const std::string& symbol, SymbolImages& images) const;
  void draw(Row& row);
  void choose(std::size_t index);
  void showActiveRow();
  bool showToolTip(const QHelpEvent& event);
  QRect ownerArea() const;

  QWidget& owner_;
  const std::shared_ptr<const Menu> items_;
  std::vector<Row> rows_; ///< one for each item
  qreal maxTitleWidth_ = maxWidth;
};

} // namespace driftmark
