// How the status item shows its symbol, title and tooltip, and when it leaves them as they are.

#include "platform/macos/MacStatusItem.h"

#include "platform/macos/Bridge.h"

#include <utility>

namespace driftmark {

namespace {

constexpr CGFloat fontSize = 11.0;

} // namespace

MacStatusItem::MacStatusItem()
    : item_([NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength]) {
  item_.button.title = @"";
  item_.button.imagePosition = NSImageLeading;
  item_.button.font = [NSFont monospacedDigitSystemFontOfSize:fontSize weight:NSFontWeightRegular];
}

MacStatusItem::~MacStatusItem() {
  item_.menu = nil;
  [NSStatusBar.systemStatusBar removeStatusItem:item_];
}

void MacStatusItem::setSymbol(const Symbol& symbol, const std::string& fallback) {
  if (symbol == symbol_ && fallback == fallback_)
    return;
  symbol_ = symbol;
  fallback_ = fallback;
  NSImage* image = symbolImage(symbol);
  if (image == nil)
    image = symbolImage({fallback, symbol.description});
  [image setTemplate:YES];
  item_.button.image = image;
}

void MacStatusItem::setTitle(const std::string& title) {
  if (title == title_)
    return;
  title_ = title;
  item_.button.title = nsString(title);
}

void MacStatusItem::setToolTip(const std::string& text) {
  if (text == toolTip_)
    return;
  toolTip_ = text;
  item_.button.toolTip = nsString(text);
}

void MacStatusItem::setMenu(std::function<Menu()> build, std::function<void()> willOpen) {
  menuDelegate_ = [[DriftmarkMenuDelegate alloc] init];
  menuDelegate_.build = std::move(build);
  menuDelegate_.willOpen = std::move(willOpen);
  NSMenu* const menu = [[NSMenu alloc] initWithTitle:@""];
  menu.delegate = menuDelegate_;
  item_.menu = menu;
}

void MacStatusItem::retitle(MenuItem::Tag tag, const std::string& title) {
  if (tag == 0)
    return;
  NSMenuItem* const item = [item_.menu itemWithTag:tag];
  if (item != nil && string(item.title) != title)
    item.title = nsString(title);
}

std::unique_ptr<StatusItem> MacStatusBar::makeStatusItem() {
  return std::make_unique<MacStatusItem>();
}

} // namespace driftmark
