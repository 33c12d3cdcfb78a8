#pragma once

#include "platform/macos/MacMenu.h"
#include "ports/StatusItem.h"

#import <AppKit/AppKit.h>

namespace driftmark {

/// An item of variable length in the system's menu bar. Where the system gives it no button,
/// nothing is shown and nothing fails.
class MacStatusItem final : public StatusItem {
public:
  MacStatusItem();
  MacStatusItem(const MacStatusItem&) = delete;
  ~MacStatusItem() override;

  void setSymbol(const Symbol& symbol, const std::string& fallback) override;
  void setTitle(const std::string& title) override;
  void setToolTip(const std::string& text) override;
  void setMenu(std::function<Menu()> build, std::function<void()> willOpen) override;
  void retitle(MenuItem::Tag tag, const std::string& title) override;

private:
  NSStatusItem* const item_;
  DriftmarkMenuDelegate* menuDelegate_ = nil; ///< the menu does not hold it

  // As last set.
  Symbol symbol_;
  std::string fallback_;
  std::string title_;
  std::string toolTip_;
};

/// The system's menu bar.
class MacStatusBar final : public StatusBar {
public:
  std::unique_ptr<StatusItem> makeStatusItem() override;
};

} // namespace driftmark
