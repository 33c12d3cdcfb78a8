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

/// A menu drawn by the desktop's style. Its shortcuts work while it is open; what was chosen runs
/// from the event loop once it has closed, and not at all when the menu is gone by then. Each
/// action's data() is its item's title as it is, its text() what is drawn of that. Main thread
/// only.
class DropDownMenu final : public QMenu {
public:
  /// Drops down from `owner`, which outlives it, in the latter's colours and resolution.
  DropDownMenu(Menu items, SymbolImages& images, QWidget& owner);

  /// Gives the first item of that tag another title, in its place.
  void retitle(MenuItem::Tag tag, const std::string& title);

  /// Opens the menu under its owner, ending where that ends. A menu that is higher than the screen
  /// scrolls. While it is open, a click on the owner only closes it.
  void open();

  /// No menu is wider than this, nor than its screen.
  static constexpr int widest = 600;

protected:
  bool event(QEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;

private:
  struct Row {
    QAction* action;
    bool isCut = false; ///< whether not all of its title is drawn
    qreal width = 0;    ///< of what is drawn of the title
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
  qreal widestTitle_ = widest;
};

} // namespace driftmark
