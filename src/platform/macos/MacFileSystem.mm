// Which file operations are the system's, and which this program does itself.

#include "platform/macos/Bridge.h"
#include "platform/macos/MacAdapters.h"
#include "platform/posix/SystemErrors.h"
#include "platform/posix/files/FileItems.h"
#include "platform/posix/files/PosixMovedItem.h"
#include "support/Paths.h"

#include <cerrno>
#include <utility>

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

bool MacFileSystem::itemExists(const std::string& path) const {
  return driftmark::itemExists(driftmark::path(fileUrl(path)));
}

bool MacFileSystem::isLink(const std::string& path) const {
  return driftmark::isLink(driftmark::path(fileUrl(path)));
}

bool MacFileSystem::areSameItem(const std::string& one, const std::string& other) const {
  return driftmark::areSameItem(path(fileUrl(one)), path(fileUrl(other)));
}

std::string MacFileSystem::homeDirectory() const {
  return string(NSHomeDirectory());
}

/// The system's folder is private unless a variable names another one.
std::variant<std::string, PlatformError> MacFileSystem::temporaryDirectory() const {
  const std::string folder(withoutTrailingSlashes(string(NSTemporaryDirectory())));
  if (!isPrivateFolder(folder))
    return fileError(folder, "used", EACCES);
  return folder + "/";
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

std::variant<std::unique_ptr<MovedItem>, PlatformError>
MacFileSystem::moveItemReversibly(const std::string& from, const std::string& to) {
  std::string source = path(fileUrl(from));
  std::string target = path(fileUrl(to));
  if (areOnTwoVolumes(from, to))
    return PosixMovedItem::move(std::move(source), std::move(target));
  if (auto error = moveItem(from, to))
    return *std::move(error);
  return std::make_unique<PosixMovedItem>(std::move(source), std::move(target), "");
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
