// How the files of iCloud Drive are walked and evicted.

#include "platform/macos/Bridge.h"
#include "platform/macos/MacAdapters.h"

namespace driftmark {

namespace {

using Values = NSDictionary<NSURLResourceKey, id>;

NSNumber* numberOf(Values* values, NSURLResourceKey key) {
  const id value = values[key];
  return [value isKindOfClass:NSNumber.class] ? value : nil;
}

std::optional<bool> booleanOf(Values* values, NSURLResourceKey key) {
  NSNumber* const number = numberOf(values, key);
  return number != nil ? std::optional<bool>(number.boolValue) : std::nullopt;
}

std::optional<DownloadingStatus> statusOf(Values* values) {
  const id value = values[NSURLUbiquitousItemDownloadingStatusKey];
  if ([value isEqual:NSURLUbiquitousItemDownloadingStatusCurrent])
    return DownloadingStatus::current;
  if ([value isEqual:NSURLUbiquitousItemDownloadingStatusDownloaded])
    return DownloadingStatus::downloaded;
  if ([value isEqual:NSURLUbiquitousItemDownloadingStatusNotDownloaded])
    return DownloadingStatus::notDownloaded;
  return std::nullopt;
}

ResourceValues resourceValues(Values* values) {
  NSNumber* const size = numberOf(values, NSURLTotalFileAllocatedSizeKey);
  return {.isRegularFile = booleanOf(values, NSURLIsRegularFileKey),
          .isUbiquitousItem = booleanOf(values, NSURLIsUbiquitousItemKey),
          .downloadingStatus = statusOf(values),
          .totalFileAllocatedSize =
              size != nil ? std::optional<std::int64_t>(size.longLongValue) : std::nullopt};
}

WalkEntry walkEntry(id item, NSArray<NSURLResourceKey>* keys) {
  WalkEntry entry;
  NSURL* const url = [item isKindOfClass:NSURL.class] ? item : nil;
  if (std::string path = driftmark::path(url); !path.empty())
    entry.path = std::move(path);
  if (Values* const values = [url resourceValuesForKeys:keys error:nil])
    entry.values = resourceValues(values);
  return entry;
}

/// The system walks a folder, but not through a link to it.
NSURL* walkable(const std::string& folder) {
  NSURL* const url = fileUrl(folder);
  Values* const values = [url resourceValuesForKeys:@[ NSURLIsSymbolicLinkKey ] error:nil];
  NSURL* const resolved =
      [numberOf(values, NSURLIsSymbolicLinkKey) boolValue] ? url.URLByResolvingSymlinksInPath : nil;
  return resolved != nil ? resolved : url;
}

} // namespace

void MacCloudFiles::walk(const std::string& folder, const EntryHandler& visit) const {
  NSArray<NSURLResourceKey>* const keys = @[
    NSURLIsRegularFileKey, NSURLIsUbiquitousItemKey, NSURLUbiquitousItemDownloadingStatusKey,
    NSURLTotalFileAllocatedSizeKey
  ];
  NSDirectoryEnumerator<NSURL*>* const enumerator =
      [NSFileManager.defaultManager enumeratorAtURL:walkable(folder)
                         includingPropertiesForKeys:keys
                                            options:0
                                       errorHandler:nil];
  for (bool more = true; more;) {
    @autoreleasepool {
      const id item = [enumerator nextObject];
      more = item != nil;
      if (more)
        noThrow([&] { visit(walkEntry(item, keys)); });
    }
  }
}

std::optional<PlatformError> MacCloudFiles::evict(const std::string& path) {
  @autoreleasepool {
    NSError* error = nil;
    if ([NSFileManager.defaultManager evictUbiquitousItemAtURL:fileUrl(path) error:&error])
      return std::nullopt;
    return PlatformError{string(error.description)};
  }
}

} // namespace driftmark
