// How a menu of the core becomes an AppKit menu.

#include "platform/macos/Bridge.h"
#include "platform/macos/MacStatusItem.h"

/// The target of a menu item: runs its action.
@interface DriftmarkMenuAction : NSObject
@property(nonatomic) std::function<void()> action;
- (void)choose:(nullable id)sender;
@end

@implementation DriftmarkMenuAction

/// Copies the action, since it may have the menu rebuilt and this object released.
- (void)choose:(id)sender {
  const std::function<void()> action = self.action;
  driftmark::noThrow(action);
}

@end

namespace driftmark {

namespace {

/// AppKit disables an item without a target. Items do not retain their targets, so the target is
/// also the represented object.
void setAction(NSMenuItem* native, const std::function<void()>& action) {
  DriftmarkMenuAction* const target = [[DriftmarkMenuAction alloc] init];
  target.action = action;
  native.representedObject = target;
  native.target = target;
  native.action = @selector(choose:);
}

NSMenuItem* nativeItem(const MenuItem& item) {
  if (item.kind == MenuItem::Kind::separator)
    return [NSMenuItem separatorItem];
  NSMenuItem* const native = [[NSMenuItem alloc] initWithTitle:nsString(item.title)
                                                        action:nil
                                                 keyEquivalent:nsString(item.keyEquivalent)];
  if (item.kind == MenuItem::Kind::command && item.action)
    setAction(native, item.action);
  if (item.symbol)
    native.image = symbolImage(*item.symbol);
  if (!item.toolTip.empty())
    native.toolTip = nsString(item.toolTip);
  if (item.isChecked)
    native.state = NSControlStateValueOn;
  native.tag = item.tag;
  return native;
}

} // namespace

NSImage* symbolImage(const Symbol& symbol) {
  return [NSImage imageWithSystemSymbolName:nsString(symbol.name)
                   accessibilityDescription:nsString(symbol.description)];
}

} // namespace driftmark

@implementation DriftmarkMenuDelegate

- (void)menuNeedsUpdate:(NSMenu*)menu {
  const driftmark::Menu items = driftmark::noThrow(self.build);
  [menu removeAllItems];
  for (const driftmark::MenuItem& item : items)
    [menu addItem:driftmark::nativeItem(item)];
}

- (void)menuWillOpen:(NSMenu*)menu {
  driftmark::noThrow(self.willOpen);
}

@end
