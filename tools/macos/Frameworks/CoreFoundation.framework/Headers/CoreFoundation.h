// The part of CoreFoundation that this program calls, declared for building without Apple's SDK.
#pragma once

#import <CoreFoundation/CFBase.h>
#import <CoreFoundation/CFRunLoop.h>
