#include "platform/macos/MacAdapters.h"
#include "platform/macos/Strings.h"

#import <AppKit/AppKit.h>

namespace driftmark {

void MacWorkspace::activateFileViewerSelecting(const std::string& path) {
  [NSWorkspace.sharedWorkspace activateFileViewerSelectingURLs:@[ fileUrl(path) ]];
}

void MacWorkspace::open(const std::string& path) {
  [NSWorkspace.sharedWorkspace openURL:fileUrl(path)];
}

} // namespace driftmark
