// The adapters that only pass a call on: bundle, login item, running applications, log, texts,
// settings and workspace.

#include "platform/macos/MacAdapters.h"

#include "platform/macos/Bridge.h"
#include "support/Strings.h"

#include <csignal>

#import <AppKit/AppKit.h>
#import <ServiceManagement/ServiceManagement.h>
#include <libproc.h>

namespace driftmark {

std::string MacBundle::path() const {
  return string(NSBundle.mainBundle.bundlePath);
}

std::optional<std::string> MacBundle::identifier() const {
  // The system also takes a folder with an executable and an Info.plist for a bundle.
  NSString* const identifier = NSBundle.mainBundle.bundleIdentifier;
  const bool isBundle = identifier != nil && path().ends_with(".app");
  return isBundle ? std::optional(string(identifier)) : std::nullopt;
}

std::optional<std::string> MacBundle::information(const std::string& key) const {
  const id value = [NSBundle.mainBundle objectForInfoDictionaryKey:nsString(key)];
  return [value isKindOfClass:NSString.class] ? std::optional(string(value)) : std::nullopt;
}

LoginItem::Status MacLoginItem::status() const {
  switch (SMAppService.mainAppService.status) {
  case SMAppServiceStatusNotRegistered:
    return Status::notRegistered;
  case SMAppServiceStatusEnabled:
    return Status::enabled;
  case SMAppServiceStatusRequiresApproval:
    return Status::requiresApproval;
  case SMAppServiceStatusNotFound:
    break;
  }
  return Status::notFound;
}

std::optional<PlatformError> MacLoginItem::registerItem() {
  NSError* error = nil;
  const bool done = [SMAppService.mainAppService registerAndReturnError:&error];
  return done ? std::nullopt : std::optional(PlatformError{string(error.description)});
}

std::optional<PlatformError> MacLoginItem::unregisterItem() {
  NSError* error = nil;
  const bool done = [SMAppService.mainAppService unregisterAndReturnError:&error];
  return done ? std::nullopt : std::optional(PlatformError{string(error.description)});
}

/// An application that ends meanwhile has the identifier -1, which `kill` would take for all
/// processes.
std::vector<std::int32_t>
MacRunningApplications::withBundleIdentifier(const std::string& identifier) const {
  std::vector<std::int32_t> processes;
  for (NSRunningApplication* application in
       [NSRunningApplication runningApplicationsWithBundleIdentifier:nsString(identifier)])
    if (const pid_t process = application.processIdentifier; process > 0)
      processes.push_back(process);
  return processes;
}

std::optional<RunningApplications::StartTime>
MacRunningApplications::startTime(std::int32_t process) const {
  rusage_info_v0 usage{};
  auto* const result = reinterpret_cast<rusage_info_t*>(&usage);
  const bool known = proc_pid_rusage(process, RUSAGE_INFO_V0, result) == 0;
  return known ? std::optional<StartTime>(usage.ri_proc_start_abstime) : std::nullopt;
}

MacSystemLog::MacSystemLog() {
  std::signal(SIGPIPE, SIG_IGN);
}

void MacSystemLog::log(std::string_view line) {
  @autoreleasepool {
    NSLog(@"%@", nsString(oneLine(line)));
  }
}

std::string MacSystemText::byteCount(std::int64_t bytes) const {
  return string([NSByteCountFormatter stringFromByteCount:bytes
                                               countStyle:NSByteCountFormatterCountStyleFile]);
}

bool MacSystemText::isUrl(const std::string& text) const {
  return parsedUrl(text) != nil;
}

std::string MacSystemText::relativeTime(Date date, Date now) const {
  const auto native = [](Date time) {
    return [NSDate dateWithTimeIntervalSince1970:Seconds(time.time_since_epoch()).count()];
  };
  NSRelativeDateTimeFormatter* const formatter = [[NSRelativeDateTimeFormatter alloc] init];
  return string([formatter localizedStringForDate:native(date) relativeToDate:native(now)]);
}

std::string MacSystemText::firstCharacters(const std::string& text, std::size_t count) const {
  NSString* const whole = nsString(text);
  NSUInteger end = 0;
  for (std::size_t character = 0; character < count && end < whole.length; ++character)
    end = NSMaxRange([whole rangeOfComposedCharacterSequenceAtIndex:end]);
  return string([whole substringToIndex:end]);
}

std::optional<std::string> MacUserDefaults::string(const std::string& key) const {
  const id value = [NSUserDefaults.standardUserDefaults objectForKey:nsString(key)];
  return [value isKindOfClass:NSString.class] ? std::optional(driftmark::string(value))
                                              : std::nullopt;
}

/// A boolean is a number to the system, too: only its type in Core Foundation tells them apart.
bool MacUserDefaults::boolean(const std::string& key) const {
  const id value = [NSUserDefaults.standardUserDefaults objectForKey:nsString(key)];
  const bool isBoolean =
      value != nil && CFGetTypeID((__bridge CFTypeRef)value) == CFBooleanGetTypeID();
  return isBoolean && [value boolValue];
}

void MacUserDefaults::setBoolean(const std::string& key, bool value) {
  [NSUserDefaults.standardUserDefaults setBool:value forKey:nsString(key)];
}

void MacWorkspace::activateFileViewerSelecting(const std::string& path) {
  [NSWorkspace.sharedWorkspace activateFileViewerSelectingURLs:@[ fileUrl(path) ]];
}

void MacWorkspace::open(const std::string& path) {
  [NSWorkspace.sharedWorkspace openURL:fileUrl(path)];
}

} // namespace driftmark
