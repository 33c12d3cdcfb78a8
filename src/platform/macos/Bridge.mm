// How texts, paths, URLs and errors are converted.

#include "platform/macos/Bridge.h"

#include "support/Utf8.h"

namespace driftmark {

namespace {

/// Nothing can exist below a file.
constexpr const char* pathOfNothing = "/dev/null/nothing";

} // namespace

NSString* nsString(std::string_view text) {
  const std::string utf8 = wellFormed(text);
  NSString* const result = [[NSString alloc] initWithBytes:utf8.data()
                                                    length:utf8.size()
                                                  encoding:NSUTF8StringEncoding];
  return result != nil ? result : @"";
}

std::string string(NSString* text) {
  NSData* const utf8 = [text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
  if (utf8.length == 0)
    return {};
  return {static_cast<const char*>(utf8.bytes), utf8.length};
}

NSURL* fileUrl(const std::string& path) {
  const bool isPath = path.starts_with('/') && path.find('\0') == std::string::npos;
  return [NSURL fileURLWithFileSystemRepresentation:isPath ? path.c_str() : pathOfNothing
                                        isDirectory:NO
                                      relativeToURL:nil];
}

std::string path(NSURL* url) {
  return url.isFileURL ? string(url.path) : std::string();
}

/// macOS 14 and later take any text and encode the characters that a URL cannot contain.
NSURL* parsedUrl(const std::string& text) {
  NSString* const spelled = nsString(text);
  NSURL* const url = [NSURL URLWithString:spelled];
  const bool isUrl = spelled.length > 0 && [url.absoluteString isEqualToString:spelled];
  return isUrl ? url : nil;
}

PlatformError platformError(NSError* error) {
  std::string description = string(error.localizedDescription);
  return {description.empty() ? "The operation couldn’t be completed." : std::move(description)};
}

} // namespace driftmark
