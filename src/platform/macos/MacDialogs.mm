// How alerts, the folder chooser and the about panel are shown.

#include "platform/macos/Bridge.h"
#include "platform/macos/MacAdapters.h"
#include "support/DisplayedText.h"

#include <algorithm>
#include <utility>

#import <AppKit/AppKit.h>

namespace driftmark {

namespace {

constexpr CGFloat maxPartOfScreen = 0.8; ///< of its height
constexpr CGSize scrollingTextSize{400, 200};

NSView* scrollingText(NSString* text) {
  NSScrollView* const area = [NSTextView scrollableTextView];
  area.frame = {{0, 0}, scrollingTextSize};
  area.drawsBackground = NO;
  NSText* const view = static_cast<NSText*>(area.documentView);
  view.string = text;
  view.font = [NSFont systemFontOfSize:NSFont.smallSystemFontSize];
  view.textColor = NSColor.labelColor;
  view.editable = NO;
  view.drawsBackground = NO;
  return area;
}

/// Makes the informative text scroll when the alert is too tall with the whole of it.
void fitToScreen(NSAlert* native) {
  [native layout];
  if (native.window.frame.size.height <=
      maxPartOfScreen * NSScreen.mainScreen.visibleFrame.size.height)
    return;
  native.accessoryView = scrollingText(native.informativeText);
  native.informativeText = @"";
}

} // namespace

std::optional<std::size_t> MacDialogs::runModal(const Alert& alert) {
  NSAlert* const native = [[NSAlert alloc] init];
  native.messageText = nsString(
      displayedText(alert.messageText, LineBreaks::becomeSpaces, Alert::maxDisplayedMessage));
  native.informativeText = nsString(alert.informativeText);
  for (const std::string& title : alert.buttons)
    [native addButtonWithTitle:nsString(title)];
  native.window.preventsApplicationTerminationWhenModal = NO;
  fitToScreen(native);

  const NSInteger index = [native runModal] - NSAlertFirstButtonReturn;
  const auto count = static_cast<NSInteger>(std::max<std::size_t>(alert.buttons.size(), 1));
  if (index < 0 || index >= count)
    return std::nullopt;
  return static_cast<std::size_t>(index);
}

std::optional<std::string> MacDialogs::chooseFolder(const FolderPanel& panel) {
  NSOpenPanel* const native = [NSOpenPanel openPanel];
  native.title = nsString(panel.title);
  native.message = nsString(panel.message);
  native.prompt = nsString(panel.prompt);
  native.canChooseFiles = NO;
  native.canChooseDirectories = YES;
  native.allowsMultipleSelection = NO;
  // By default the panel downloads what is chosen, and asks about its conflicts.
  native.canDownloadUbiquitousContents = NO;
  native.canResolveUbiquitousConflicts = NO;
  native.directoryURL = [NSURL fileURLWithFileSystemRepresentation:panel.directory.c_str()
                                                       isDirectory:YES
                                                     relativeToURL:nil];

  if ([native runModal] != NSModalResponseOK)
    return std::nullopt;
  std::string chosen = path(native.URL);
  return chosen.empty() ? std::nullopt : std::optional(std::move(chosen));
}

void MacDialogs::orderFrontAboutPanel(const std::string& credits) {
  NSDictionary<NSAttributedStringKey, id>* const attributes = @{
    NSFontAttributeName : [NSFont systemFontOfSize:NSFont.smallSystemFontSize],
    NSForegroundColorAttributeName : NSColor.labelColor,
  };
  NSAttributedString* const text = [[NSAttributedString alloc] initWithString:nsString(credits)
                                                                   attributes:attributes];
  [NSApplication.sharedApplication
      orderFrontStandardAboutPanelWithOptions:@{NSAboutPanelOptionCredits : text}];
}

} // namespace driftmark
