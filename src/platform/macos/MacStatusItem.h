#pragma once

#include "ports/Menu.h"
#include "ports/StatusItem.h"

#include <functional>

#import <AppKit/AppKit.h>

/// Rebuilds its menu whenever AppKit is about to show it. Both functions must be set. (MacMenu.mm)
@interface DriftmarkMenuDelegate : NSObject <NSMenuDelegate>
@property(nonatomic) std::function<driftmark::Menu()> build;
@property(nonatomic) std::function<void()> willOpen;
@end

namespace driftmark {

/// The image of the symbol; nil where the system has none of that name. (MacMenu.mm)
NSImage* _Nullable symbolImage(const Symbol& symbol);

/// An item of variable length in the system's menu bar. If the system gives it no button, it shows
/// nothing, and no call fails.
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
  DriftmarkMenuDelegate* menuDelegate_ = nil; ///< the menu does not retain it

  // The last values that were set.
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
