#pragma once

#include "platform/linux/looks/Look.h"
#include "platform/linux/looks/SymbolImages.h"
#include "platform/linux/menubar/X11Panel.h"

#include <functional>
#include <string>

#include <QWidget>

namespace driftmark {

/// The strip at the top right of the primary screen that replaces the system's menu bar: a symbol
/// and an optional title behind it. It stays above other windows, is in no task bar and never takes
/// the keyboard focus by itself. A click presses it; so do the space bar, Enter and the down key
/// when it has the focus; Escape gives that back. On an X display it is a panel on all workspaces,
/// beside the other panels. Screen readers read the symbol's description. Main thread only.
class MenuBarStrip final : public QWidget {
public:
  /// `images` outlives the strip.
  MenuBarStrip(SymbolImages& images, std::function<void()> onPress);

  /// Shows the symbol of that name, or none for an unknown name.
  void setSymbol(const std::string& name, const QString& description);
  void setTitle(const std::string& title);

  /// Draws the strip as the owner of an open menu, or not.
  void setHighlighted(bool highlighted);

  /// Gives the keyboard focus back to the window that had it before the strip.
  void giveFocusBack() { panel_.giveFocusBack(); }

  /// Presses the strip, as a click does.
  void press() { onPress_(); }

  const std::string& symbol() const { return symbol_; }
  const std::string& title() const { return title_; }
  bool isHighlighted() const { return isHighlighted_; }

  /// How often the strip was drawn. It is drawn again only after a change.
  int paintCount() const { return paintCount_; }

protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

private:
  void useSystemFont();
  Look look() const;
  void followScreen();
  void fit();
  void place();

  X11Panel panel_;
  SymbolImages& images_;
  const std::function<void()> onPress_;
  std::string symbol_;
  std::string title_;
  QString elidedTitle_;
  bool isHighlighted_ = false;
  bool showsFocus_ = false;
  int paintCount_ = 0;
  QMetaObject::Connection screenConnection_;
};

// MenuBarAccessibility.cpp

/// Makes Qt describe menu bar strips as menu buttons, and the rows of their menus by their whole
/// titles, to screen readers. May be called repeatedly. Main thread only.
void installMenuBarAccessibility();

} // namespace driftmark
