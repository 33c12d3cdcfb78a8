#pragma once

#include "ports/Menu.h"

#include <functional>
#include <memory>
#include <string>

namespace driftmark {

/// An item in the system's menu bar. Its symbol precedes its title, which is set in digits of equal
/// width, 11 points high. Setting an unchanged value costs nothing. Main thread only.
class StatusItem {
public:
  virtual ~StatusItem() = default;

  /// Shows the symbol of that name. Where the system has none, it shows the symbol `fallback` with
  /// the same description; without that one either, no symbol.
  virtual void setSymbol(const Symbol& symbol, const std::string& fallback) = 0;

  virtual void setTitle(const std::string& title) = 0;
  virtual void setToolTip(const std::string& text) = 0;

  /// Sets the menu that the item opens. Each opening calls `build` for the menu to show, and
  /// `willOpen`; both on the main thread. Without a menu nothing opens.
  virtual void setMenu(std::function<Menu()> build, std::function<void()> willOpen) = 0;

  /// Gives an item of the menu that was built last another title, in the open menu too. Does
  /// nothing when that menu has no such item.
  virtual void retitle(MenuItem::Tag tag, const std::string& title) = 0;
};

/// The system's menu bar. Main thread only.
class StatusBar {
public:
  virtual ~StatusBar() = default;

  /// Shows a new item, as wide as it needs, until it is released. Null when the system gives none.
  virtual std::unique_ptr<StatusItem> makeStatusItem() = 0;
};

} // namespace driftmark
