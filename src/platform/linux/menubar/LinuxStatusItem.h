#pragma once

#include "platform/linux/looks/SymbolImages.h"
#include "platform/linux/menubar/DropDownMenu.h"
#include "platform/linux/menubar/MenuBarStrip.h"
#include "ports/StatusItem.h"

#include <memory>

namespace driftmark {

/// A status item as a menu-bar strip. Needs a QApplication.
class LinuxStatusItem final : public StatusItem {
public:
  LinuxStatusItem();
  LinuxStatusItem(const LinuxStatusItem&) = delete;
  LinuxStatusItem& operator=(const LinuxStatusItem&) = delete;
  ~LinuxStatusItem() override;

  void setSymbol(const Symbol& symbol, const std::string& fallback) override;
  void setTitle(const std::string& title) override { strip_.setTitle(title); }
  void setToolTip(const std::string& text) override;
  void setMenu(std::function<Menu()> build, std::function<void()> willOpen) override;
  void retitle(MenuItem::Tag tag, const std::string& title) override;

  MenuBarStrip& strip() { return strip_; }

  /// The menu that was built last; null before the first.
  DropDownMenu* menu() { return menu_.get(); }

private:
  void toggleMenu();

  SymbolImages images_;
  MenuBarStrip strip_;
  std::function<Menu()> build_;
  std::function<void()> willOpen_;
  std::unique_ptr<DropDownMenu> menu_;
};

/// The menu bar of the Linux frontend: each item is a strip.
class LinuxStatusBar final : public StatusBar {
public:
  std::unique_ptr<StatusItem> makeStatusItem() override {
    return std::make_unique<LinuxStatusItem>();
  }
};

} // namespace driftmark
