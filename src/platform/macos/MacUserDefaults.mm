#include "platform/macos/MacAdapters.h"
#include "platform/macos/Strings.h"

namespace driftmark {

std::optional<std::string> MacUserDefaults::string(const std::string& key) const {
  NSString* const value = [NSUserDefaults.standardUserDefaults stringForKey:nsString(key)];
  return value != nil ? std::optional(driftmark::string(value)) : std::nullopt;
}

bool MacUserDefaults::boolean(const std::string& key) const {
  return [NSUserDefaults.standardUserDefaults boolForKey:nsString(key)];
}

void MacUserDefaults::setBoolean(const std::string& key, bool value) {
  [NSUserDefaults.standardUserDefaults setBool:value forKey:nsString(key)];
}

} // namespace driftmark
