// The part of AppKit that this program calls, declared for building without Apple's SDK.
#pragma once

#import <AppKit/NSAlert.h>
#import <AppKit/NSApplication.h>
#import <AppKit/NSFont.h>
#import <AppKit/NSImage.h>
#import <AppKit/NSMenu.h>
#import <AppKit/NSOpenPanel.h>
#import <AppKit/NSStatusItem.h>
#import <AppKit/NSTextView.h>
#import <AppKit/NSWorkspace.h>
#import <Foundation/Foundation.h>
