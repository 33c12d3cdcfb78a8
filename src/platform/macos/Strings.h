#pragma once

#include "ports/PlatformError.h"

#include <string>
#include <string_view>

#import <Foundation/Foundation.h>

/// Texts, paths and errors on their way between the core and the system. Any thread.
namespace driftmark {

/// The text; what is not UTF-8 comes out as U+FFFD.
NSString* _Nonnull nsString(std::string_view text);

/// The text in UTF-8; empty for nil.
std::string string(NSString* _Nullable text);

/// The item at an absolute path, whose bytes are taken as they are. What is no absolute path, or
/// has a NUL in it, gives the address of nothing.
NSURL* _Nonnull fileUrl(const std::string& path, bool isFolder = false);

/// The path of a file's address, without a trailing slash; empty for any other address.
std::string path(NSURL* _Nullable url);

/// The address that the whole text spells, relative ones included; nil when it is none.
NSURL* _Nullable address(const std::string& text);

/// What the system tells people of a failure.
PlatformError platformError(NSError* _Nullable error);

} // namespace driftmark
