#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacFileManager.hpp"

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/Unicode.hpp"
#include "platform/macos/FoundationBridge.hpp"
#include "platform/macos/ItemReplacementDirectory.hpp"
#include "state/L10n.hpp"

namespace kestrivane {
namespace {

NSString* nsPath(const FileURL& url) {
  return [NSFileManager.defaultManager stringWithFileSystemRepresentation:url.path().c_str()
                                                                   length:url.path().size()];
}

FileVersion versionAt(const FileURL& url) {
  struct stat status;
  if (lstat(url.path().c_str(), &status) != 0) return {};
  return {.device = static_cast<std::uint64_t>(status.st_dev),
          .inode = status.st_ino,
          .size = status.st_size,
          .modifiedSeconds = status.st_mtimespec.tv_sec,
          .modifiedNanoseconds = status.st_mtimespec.tv_nsec};
}

PlatformError changedMeanwhile(const FileURL& url) {
  const std::string name = "'" + validUTF8(url.lastPathComponent()) + "'";
  return PlatformError(ESTALE, L10n::choose("Could not replace " + name +
                                                ": it was changed meanwhile. Rename it again "
                                                "to convert it as it is now.",
                                            "Не удалось заменить " + name +
                                                ": файл был изменён. Переименуйте его "
                                                "ещё раз, чтобы конвертировать новую версию."));
}

/// Brings the file to the medium: fsync(2) alone leaves it in the drive's cache, which F_FULLFSYNC
/// empties. Not every file system knows the latter.
void flush(const FileURL& url) {
  NSError* error = nil;
  // The handle closes the descriptor when it goes, which ARC may let it do after its last use.
  NS_VALID_UNTIL_END_OF_SCOPE NSFileHandle* const file =
      [NSFileHandle fileHandleForReadingFromURL:nsURL(url) error:&error];
  if (file == nil) throw platformError(error);
  const int descriptor = file.fileDescriptor;
  if (fcntl(descriptor, F_FULLFSYNC) == 0 || fsync(descriptor) == 0) return;
  const std::error_code reason(errno, std::generic_category());
  throw PlatformError(reason.value(), reason.message());
}

/// Replaces `original` by a file on the same volume.
void exchange(const FileURL& original, const FileURL& replacement, const FileVersion& expected) {
  flush(replacement);
  if (versionAt(original) != expected) throw changedMeanwhile(original);
  NSError* error = nil;
  const BOOL isReplaced = [NSFileManager.defaultManager replaceItemAtURL:nsURL(original)
                                                           withItemAtURL:nsURL(replacement)
                                                          backupItemName:nil
                                                                 options:0
                                                        resultingItemURL:nil
                                                                   error:&error];
  if (!isReplaced) throw platformError(error);
}

}  // namespace

ItemKind MacFileManager::kindOfItem(const FileURL& url) const {
  @autoreleasepool {
    BOOL isDirectory = NO;
    if (![NSFileManager.defaultManager fileExistsAtPath:nsPath(url) isDirectory:&isDirectory])
      return ItemKind::none;
    return isDirectory ? ItemKind::directory : ItemKind::file;
  }
}

// Foundation's own resolution takes "/private" off, which the paths of file events have.
FileURL MacFileManager::resolvingSymbolicLinks(const FileURL& url) const {
  std::error_code error;
  const std::filesystem::path resolved = std::filesystem::canonical(url.path(), error);
  return error ? url : FileURL(resolved.native());
}

bool MacFileManager::hasRoom(const FileURL& folder) const {
  constexpr unsigned long long megabyte = 1 << 20;
  @autoreleasepool {
    NSDictionary<NSString*, id>* const attributes =
        [NSFileManager.defaultManager attributesOfFileSystemForPath:nsPath(folder) error:nil];
    NSNumber* const freeSize = attributes[NSFileSystemFreeSize];
    return freeSize == nil || freeSize.unsignedLongLongValue >= megabyte;
  }
}

void MacFileManager::moveItem(const FileURL& source, const FileURL& destination) {
  @autoreleasepool {
    NSError* error = nil;
    if (![NSFileManager.defaultManager moveItemAtURL:nsURL(source)
                                               toURL:nsURL(destination)
                                               error:&error]) {
      throw platformError(error);
    }
  }
}

FileVersion MacFileManager::versionOfItem(const FileURL& url) const {
  return versionAt(url);
}

void MacFileManager::replaceItem(const FileURL& original, const FileURL& replacement,
                                 const FileVersion& expected) {
  @autoreleasepool {
    if (versionAt(replacement).device == expected.device)
      return exchange(original, replacement, expected);

    // The system replaces within one volume only.
    const auto folder = ItemReplacementDirectory::create(nsURL(original));
    const FileURL copy = folder.url().appendingPathComponent(original.lastPathComponent());
    NSError* error = nil;
    if (![NSFileManager.defaultManager copyItemAtURL:nsURL(replacement)
                                               toURL:nsURL(copy)
                                               error:&error]) {
      throw platformError(error);
    }
    exchange(original, copy, expected);
    // The original is replaced even if the source of the copy should refuse to go.
    [NSFileManager.defaultManager removeItemAtURL:nsURL(replacement) error:nil];
  }
}

FileURL MacFileManager::temporaryDirectory() {
  @autoreleasepool {
    return fileURL(NSFileManager.defaultManager.temporaryDirectory);
  }
}

}  // namespace kestrivane
