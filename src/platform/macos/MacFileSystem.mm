// Which file operations are the system's, and which this program does itself.

#include "platform/macos/Bridge.h"
#include "platform/macos/MacAdapters.h"
#include "platform/posix/SystemErrors.h"
#include "platform/posix/files/FileItems.h"
#include "support/Paths.h"

namespace driftmark {

namespace {

NSFileManager* manager() {
  return NSFileManager.defaultManager;
}

std::optional<PlatformError> outcome(bool done, NSError* error) {
  return done ? std::nullopt : std::optional(platformError(error));
}

} // namespace

bool MacFileSystem::fileExists(const std::string& path) const {
  return [manager() fileExistsAtPath:nsString(driftmark::path(fileUrl(path)))];
}

std::string MacFileSystem::homeDirectory() const {
  return string(NSHomeDirectory());
}

std::string MacFileSystem::temporaryDirectory() const {
  return std::string(withoutTrailingSlashes(string(NSTemporaryDirectory()))) + "/";
}

std::optional<PlatformError> MacFileSystem::createDirectory(const std::string& path) {
  NSError* error = nil;
  const bool done = [manager() createDirectoryAtURL:fileUrl(path)
                        withIntermediateDirectories:YES
                                         attributes:nil
                                              error:&error];
  return outcome(done, error);
}

std::optional<PlatformError> MacFileSystem::removeItem(const std::string& path) {
  NSError* error = nil;
  const bool done = [manager() removeItemAtURL:fileUrl(path) error:&error];
  return outcome(done, error);
}

/// Between volumes the system's own move makes a part of the item visible before the whole.
std::optional<PlatformError> MacFileSystem::moveItem(const std::string& from,
                                                     const std::string& to) {
  NSURL* const source = fileUrl(from);
  NSURL* const target = fileUrl(to);
  if (areOnTwoVolumes(from, to)) {
    const int error = moveTree(path(source), path(target));
    return error == 0 ? std::nullopt : std::optional(fileError(from, "moved", error));
  }
  NSError* error = nil;
  const bool done = [manager() moveItemAtURL:source toURL:target error:&error];
  return outcome(done, error);
}

std::optional<PlatformError> MacFileSystem::trashItem(const std::string& path) {
  NSError* error = nil;
  const bool done = [manager() trashItemAtURL:fileUrl(path) resultingItemURL:nil error:&error];
  return outcome(done, error);
}

PlatformError MacFileSystem::unknownWriteError() const {
  return platformError([NSError errorWithDomain:NSCocoaErrorDomain
                                           code:NSFileWriteUnknownError
                                       userInfo:nil]);
}

} // namespace driftmark
