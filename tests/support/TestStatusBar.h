#pragma once

#include "ports/StatusItem.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace driftmark::test {

/// A menu bar for one item. Its contents can be read even after the item is released.
class TestStatusBar final : public StatusBar {
public:
  std::unique_ptr<StatusItem> makeStatusItem() override {
    if (declines_)
      return nullptr;
    return std::make_unique<Item>(*this);
  }

  /// Makes the menu bar give no item.
  void decline() { declines_ = true; }

  /// Removes the symbol of this name from the system.
  void forget(std::string symbol) { unknown_ = std::move(symbol); }

  /// Removes all symbols from the system.
  void forgetSymbols() { knowsSymbols_ = false; }

  /// Whether an item is shown.
  bool hasItem() const { return item_ != nullptr; }

  /// The shown symbol; its name is empty when there is none.
  const Symbol& symbol() const { return symbol_; }
  const std::string& title() const { return title_; }
  const std::string& toolTip() const { return toolTip_; }

  /// The number of setter calls that changed a value.
  int changes() const { return changes_; }

  /// Opens the menu as the user does. There must be one.
  Menu& open() {
    menu_ = build_();
    willOpen_();
    return menu_;
  }

  /// The menu that was opened last.
  const Menu& menu() const { return menu_; }

  /// Chooses the item whose title begins with `title` in the menu that was opened last. There must
  /// be one.
  void choose(std::string_view title) const {
    for (const MenuItem& item : menu_) {
      if (item.kind != MenuItem::Kind::command || !item.title.starts_with(title))
        continue;
      item.action();
      return;
    }
    throw std::logic_error("the menu has no such item");
  }

private:
  class Item final : public StatusItem {
  public:
    explicit Item(TestStatusBar& bar) : bar_(bar) { bar_.item_ = this; }
    Item(const Item&) = delete;
    Item& operator=(const Item&) = delete;
    ~Item() override {
      bar_.item_ = nullptr;
      bar_.build_ = nullptr;
      bar_.willOpen_ = nullptr;
    }

    void setSymbol(const Symbol& symbol, const std::string& fallback) override {
      Symbol shown = symbol;
      if (shown.name == bar_.unknown_)
        shown.name = fallback;
      if (!bar_.knowsSymbols_)
        shown.name.clear();
      bar_.set(bar_.symbol_, shown);
    }
    void setTitle(const std::string& title) override { bar_.set(bar_.title_, title); }
    void setToolTip(const std::string& text) override { bar_.set(bar_.toolTip_, text); }
    void setMenu(std::function<Menu()> build, std::function<void()> willOpen) override {
      bar_.build_ = std::move(build);
      bar_.willOpen_ = std::move(willOpen);
    }
    void retitle(MenuItem::Tag tag, const std::string& title) override {
      for (MenuItem& item : bar_.menu_)
        if (item.tag == tag)
          item.title = title;
    }

  private:
    TestStatusBar& bar_;
  };

  template <class Value> void set(Value& shown, const Value& value) {
    if (shown == value)
      return;
    shown = value;
    ++changes_;
  }

  bool declines_ = false;
  std::string unknown_;
  bool knowsSymbols_ = true;
  StatusItem* item_ = nullptr;
  Symbol symbol_;
  std::string title_;
  std::string toolTip_;
  int changes_ = 0;
  Menu menu_;
  std::function<Menu()> build_;
  std::function<void()> willOpen_;
};

} // namespace driftmark::test
