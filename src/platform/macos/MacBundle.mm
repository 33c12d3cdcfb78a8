#include "platform/macos/MacAdapters.h"
#include "platform/macos/Strings.h"

namespace driftmark {

std::string MacBundle::path() const {
  return string(NSBundle.mainBundle.bundlePath);
}

std::optional<std::string> MacBundle::identifier() const {
  NSString* const identifier = NSBundle.mainBundle.bundleIdentifier;
  return identifier != nil ? std::optional(string(identifier)) : std::nullopt;
}

std::optional<std::string> MacBundle::information(const std::string& key) const {
  const id value = [NSBundle.mainBundle objectForInfoDictionaryKey:nsString(key)];
  return [value isKindOfClass:NSString.class] ? std::optional(string(value)) : std::nullopt;
}

} // namespace driftmark
