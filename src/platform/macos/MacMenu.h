#pragma once

#include "ports/Menu.h"

#include <functional>

#import <AppKit/AppKit.h>

/// Fills its menu anew whenever AppKit is about to show it. Both functions must be set.
@interface DriftmarkMenuDelegate : NSObject <NSMenuDelegate>
@property(nonatomic) std::function<driftmark::Menu()> build;
@property(nonatomic) std::function<void()> willOpen;
@end

namespace driftmark {

/// The picture of that symbol; nil where the system has none of that name.
NSImage* _Nullable symbolImage(const Symbol& symbol);

} // namespace driftmark
