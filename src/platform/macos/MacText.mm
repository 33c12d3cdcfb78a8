#include "platform/macos/MacAdapters.h"
#include "platform/macos/Strings.h"

namespace driftmark {

namespace {

NSDate* nativeDate(Date date) {
  return [NSDate dateWithTimeIntervalSince1970:Seconds(date.time_since_epoch()).count()];
}

} // namespace

std::string MacText::byteCount(std::int64_t bytes) const {
  return string([NSByteCountFormatter stringFromByteCount:bytes
                                               countStyle:NSByteCountFormatterCountStyleFile]);
}

bool MacText::isUrl(const std::string& text) const {
  return address(text) != nil;
}

std::string MacText::relativeTime(Date date, Date now) const {
  NSRelativeDateTimeFormatter* const formatter = [[NSRelativeDateTimeFormatter alloc] init];
  return string([formatter localizedStringForDate:nativeDate(date) relativeToDate:nativeDate(now)]);
}

std::string MacText::firstCharacters(const std::string& text, std::size_t count) const {
  NSString* const whole = nsString(text);
  NSUInteger end = 0;
  for (std::size_t character = 0; character < count && end < whole.length; ++character)
    end = NSMaxRange([whole rangeOfComposedCharacterSequenceAtIndex:end]);
  return string([whole substringToIndex:end]);
}

} // namespace driftmark
