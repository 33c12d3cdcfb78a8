#pragma once

#include "ports/Menu.h"
#include "ports/Symbol.h"

#include <functional>
#include <memory>
#include <string>

namespace driftmark {

/// An item in the system's menu bar. Its symbol stands before its title, which is set in digits of
/// equal width, 11 points high. It costs nothing to set what is set already. Main thread only.
class StatusItem {
public:
  virtual ~StatusItem() = default;

  /// Shows the symbol of that name; where there is none, the symbol `fallback` with the same
  /// description; without that one either, no symbol.
  virtual void setSymbol(const Symbol& symbol, const std::string& fallback) = 0;

  virtual void setTitle(const std::string& title) = 0;
  virtual void setToolTip(const std::string& text) = 0;

  /// What the item drops down. At each opening `build` is called for the menu to show, and
  /// `willOpen`; both on the main thread. Without a menu nothing opens.
  virtual void setMenu(std::function<Menu()> build, std::function<void()> willOpen) = 0;

  /// Gives an item of the menu built last another title, in the open menu too. Does nothing when
  /// that menu has no such item.
  virtual void retitle(MenuItem::Tag tag, const std::string& title) = 0;
};

/// The system's menu bar. Main thread only.
class StatusBar {
public:
  virtual ~StatusBar() = default;

  /// Puts up a new item, as wide as it needs, which stays until it is released. Null when the
  /// system gives none.
  virtual std::unique_ptr<StatusItem> makeStatusItem() = 0;
};

} // namespace driftmark
