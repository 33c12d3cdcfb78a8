// Tests that the check of declarations reports each kind of error. Takes the name of a case.

import assert from 'node:assert/strict';
import path from 'node:path';
import { check, runCase, spoil } from './support.mjs';

const foundation = 'Foundation.framework/Headers/Foundation.h';
const appKit = 'AppKit.framework/Headers/AppKit.h';
const stub = 'AppKit.framework/AppKit.tbd';

/// name -> file, text of a right declaration, its replacement, the message that must be reported.
const errors = {
  misspeltSelectorIsReported: [
    appKit,
    '- (void)addItem:',
    '- (void)addItm:',
    /AppKit\.h:31: -\[NSMenu addItm:\]: the SDK has no such method \(it has addItem/,
  ],
  droppedArgumentIsReported: [
    appKit,
    'action:(nullable SEL)selector\n',
    '\n',
    /AppKit\.h:19: -\[NSMenuItem initWithTitle:keyEquivalent:\]: the SDK has no such method/,
  ],
  joinedSelectorIsReported: [
    foundation,
    '- (BOOL)removeItemAtURL:(NSURL*)URL error:',
    '- (BOOL)removeItem:(NSURL*)URL atURLError:',
    /Foundation\.h:20: -\[NSFileManager removeItem:atURLError:\]: no method of the SDK is spelt/,
  ],
  missingColonIsReported: [
    appKit,
    '- (void)menuNeedsUpdate:(NSMenu*)menu;',
    '- (void)menuNeedsUpdate;',
    /AppKit\.h:26: -\[NSMenuDelegate menuNeedsUpdate\]: has 0 arguments; in the SDK it has 1/,
  ],
  argumentOfOtherKindIsReported: [
    foundation,
    'isDirectory:(BOOL)isDir',
    'isDirectory:(NSString*)isDir',
    /Foundation\.h:15: \+\[NSURL fileURLWithPath:isDirectory:\]: argument 2 \(isDir\) is string; the SDK has boolean/,
  ],
  nullableArgumentIsReported: [
    appKit,
    'addItem:(NSMenuItem*)',
    'addItem:(nullable NSMenuItem*)',
    /AppKit\.h:31: -\[NSMenu addItem:\]: argument 1 \(newItem\) may be nil; in the SDK it may not/,
  ],
  blockOfOtherArgumentCountIsReported: [
    foundation,
    '(void (^)(NSTimer* timer))block',
    '(void (^)(NSTimer* timer, BOOL last))block',
    /Foundation\.h:44: \+\[NSTimer .*\]: argument 3 \(block\) is a block of \(NSTimer, boolean\)/,
  ],
  blockOfOtherArgumentKindIsReported: [
    foundation,
    '(void (^)(NSTimer* timer))block',
    '(void (^)(NSString* timer))block',
    /Foundation\.h:44: .* is a block of \(string\); the SDK has a block of \(NSTimer\)/,
  ],
  otherResultKindIsReported: [
    appKit,
    '- (void)addItem:',
    '- (BOOL)addItem:',
    /AppKit\.h:31: -\[NSMenu addItem:\]: its result is boolean; the SDK has void/,
  ],
  classMethodDeclaredForInstancesIsReported: [
    foundation,
    '+ (NSURL*)file',
    '- (NSURL*)file',
    /Foundation\.h:15: -\[NSURL fileURLWithPath:isDirectory:\]: a method of instances; in the SDK it is one of the class/,
  ],
  requiredMethodIsReported: [
    appKit,
    '@optional',
    '@required',
    /AppKit\.h:26: -\[NSMenuDelegate menuNeedsUpdate:\]: required; in the SDK it is optional/,
  ],
  writablePropertyIsReported: [
    appKit,
    '@property(readonly) BOOL hasSubmenu',
    '@property BOOL hasSubmenu',
    /AppKit\.h:17: NSMenuItem\.hasSubmenu: writable; in the SDK it is readonly/,
  ],
  getterOfOtherNameIsReported: [
    appKit,
    'getter=isEnabled',
    'getter=isEnabledNow',
    /AppKit\.h:18: NSMenuItem\.enabled: no method of the SDK is spelt isEnabledNow/,
  ],
  otherSuperclassIsReported: [
    appKit,
    '@interface NSView : NSResponder',
    '@interface NSView : NSObject',
    /AppKit\.h:12: NSView: its superclass is NSObject; in the SDK it is NSResponder/,
  ],
  unknownClassIsReported: [
    appKit,
    '@interface NSResponder : NSObject\n@end',
    '@class NSResponder;\n@interface NSResponder : NSObject\n@end\n@interface NSTrayIcon : NSObject\n@end',
    /AppKit\.h:12: NSTrayIcon: the SDK has no such class/,
  ],
  classOfOtherFrameworkIsReported: [
    foundation,
    '@interface NSURL : NSObject',
    '@interface NSImage : NSObject\n@end\n@interface NSURL : NSObject',
    /Foundation\.h:14: NSImage: declared in Foundation; the SDK has it in AppKit/,
  ],
  otherValueIsReported: [
    foundation,
    'NSByteCountFormatterCountStyleFile,',
    'NSByteCountFormatterCountStyleFile = 1,',
    /Foundation\.h:24: NSByteCountFormatterCountStyleFile: is 1; in the SDK it is 0/,
  ],
  unknownConstantIsReported: [
    foundation,
    'NSString* const NSCocoaErrorDomain;',
    'NSString* const NSCocoaErrorDomain, *const NSCocoaErrorRealm;',
    /Foundation\.h:36: NSCocoaErrorRealm: the SDK has no such constant/,
  ],
  functionOfOtherArgumentsIsReported: [
    foundation,
    '(NSString* userName)',
    '(NSString* userName, BOOL create)',
    /Foundation\.h:38: NSHomeDirectoryForUser: has 2 arguments; in the SDK it has 1/,
  ],
  structureOfOtherFieldsIsReported: [
    foundation,
    '  NSUInteger location;\n  NSUInteger length;',
    '  NSUInteger length;\n  NSUInteger location;',
    /Foundation\.h:28: _NSRange: has the fields length, location; in the SDK it has location, length/,
  ],
  unknownSymbolInStubIsReported: [
    stub,
    '    objc-classes:',
    '    symbols:           [ _NSTrayIconNotification ]\n    objc-classes:',
    /AppKit\.tbd: _NSTrayIconNotification: AppKit has no such symbol/,
  ],
  foreignClassInStubIsReported: [
    stub,
    '[ NSMenu, NSMenuItem ]',
    '[ NSFileManager, NSMenu, NSMenuItem ]',
    /AppKit\.tbd: NSFileManager: AppKit has no such class/,
  ],
  otherInstallNameIsReported: [
    stub,
    'Versions/C',
    'Versions/A',
    /AppKit\.tbd: install name: is .*Versions\/A\/AppKit; it must be .*Versions\/C\/AppKit/,
  ],
  compilerErrorIsReported: [appKit, '@class NSMenu;', '@klass NSMenu;', /AppKit\.h:7:/],
};

const cases = {
  matchingDeclarationsAreAccepted(folder) {
    const { status, lines } = check('declarations.mjs', path.join(folder, 'Frameworks'));
    assert.deepEqual(
      lines.filter(line => !/: no differences$/.test(line)),
      [],
    );
    assert.equal(status, 0);
  },
};
for (const [name, [file, from, to, expected]] of Object.entries(errors)) {
  cases[name] = folder => {
    spoil(path.join(folder, 'Frameworks'), { file, from, to });
    const { status, lines } = check('declarations.mjs', path.join(folder, 'Frameworks'));
    assert.match(lines.join('\n'), expected);
    assert.equal(status, 1);
  };
}

await runCase(cases);
