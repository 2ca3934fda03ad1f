#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacFileManager.hpp"

#include <filesystem>
#include <system_error>

#include "platform/macos/FileExchange.hpp"
#include "platform/macos/FileReplacement.hpp"
#include "platform/macos/FoundationBridge.hpp"

namespace kestrivane {
namespace {

NSString* nsPath(const FileURL& url) {
  return [NSFileManager.defaultManager stringWithFileSystemRepresentation:url.path().c_str()
                                                                   length:url.path().size()];
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
  replaceFile(original, replacement, expected);
}

FileURL MacFileManager::temporaryDirectory() {
  @autoreleasepool {
    return fileURL(NSFileManager.defaultManager.temporaryDirectory);
  }
}

}  // namespace kestrivane
