// The part of Foundation that this program calls, declared for building without Apple's SDK.
#pragma once

#import <CoreFoundation/CoreFoundation.h>
#import <Foundation/NSAttributedString.h>
#import <Foundation/NSBundle.h>
#import <Foundation/NSCollections.h>
#import <Foundation/NSError.h>
#import <Foundation/NSFileManager.h>
#import <Foundation/NSFormatters.h>
#import <Foundation/NSObjCRuntime.h>
#import <Foundation/NSProcessInfo.h>
#import <Foundation/NSString.h>
#import <Foundation/NSTimer.h>
#import <Foundation/NSURL.h>
#import <Foundation/NSURLSession.h>
#import <Foundation/NSUserDefaults.h>
#import <Foundation/NSValue.h>
