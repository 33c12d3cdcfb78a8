#pragma once

#include "ports/PlatformError.h"

#include <string>
#include <string_view>

#import <Foundation/Foundation.h>

/// Conversions of texts, paths and errors between the core and the system, and calls of the core by
/// the system. Any thread.
namespace driftmark {

/// Calls `function` and returns its result. For callers in Objective-C, through which no exception
/// may pass: one ends the program instead.
template <class Function> auto noThrow(const Function& function) noexcept {
  return function();
}

/// The text. Bytes that are not UTF-8 become U+FFFD.
NSString* _Nonnull nsString(std::string_view text);

/// The text in UTF-8; empty for nil.
std::string string(NSString* _Nullable text);

/// The URL of the item at an absolute path, whose bytes are taken as they are. A relative path, or
/// one with a NUL, gives the URL of a file that cannot exist.
NSURL* _Nonnull fileUrl(const std::string& path);

/// The path of a file URL, without a trailing slash; empty for any other URL.
std::string path(NSURL* _Nullable url);

/// The URL that the whole text spells, a relative one included; nil when it is none.
NSURL* _Nullable parsedUrl(const std::string& text);

/// The system's description of a failure for the user.
PlatformError platformError(NSError* _Nullable error);

} // namespace driftmark
