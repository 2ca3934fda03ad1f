#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/FileReplacement.hpp"

#include <cerrno>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "platform/Unicode.hpp"
#include "platform/macos/FileExchange.hpp"
#include "platform/macos/FoundationBridge.hpp"
#include "platform/macos/ItemReplacementDirectory.hpp"
#include "state/L10n.hpp"

namespace kestrivane {
namespace {

PlatformError changedMeanwhile(const FileURL& url) {
  const std::string name = "'" + validUTF8(url.lastPathComponent()) + "'";
  return PlatformError(ESTALE, L10n::choose("Could not replace " + name +
                                                ": it was changed meanwhile. Rename it again "
                                                "to convert it as it is now.",
                                            "Не удалось заменить " + name +
                                                ": файл был изменён. Переименуйте его "
                                                "ещё раз, чтобы конвертировать новую версию."));
}

PlatformError changedTwice(const FileURL& url, const FileURL& kept) {
  const std::string name = "'" + validUTF8(url.lastPathComponent()) + "'";
  const std::string place = "'" + validUTF8(kept.path()) + "'";
  return PlatformError(
      ESTALE,
      L10n::choose(
          "Could not replace " + name +
              ": it was changed more than once meanwhile. One version of it is now " + place + ".",
          "Не удалось заменить " + name +
              ": файл был изменён несколько раз. Одна из его версий теперь " + place + "."));
}

/// Opens the file and does `operation`, which fails as a system call does, on its descriptor.
void withDescriptor(const FileURL& url, int (*operation)(int descriptor)) {
  NSError* error = nil;
  // The handle closes the descriptor when it goes, which ARC may let it do after its last use.
  NS_VALID_UNTIL_END_OF_SCOPE NSFileHandle* const file =
      [NSFileHandle fileHandleForReadingFromURL:nsURL(url) error:&error];
  if (file == nil) throw platformError(error);
  if (operation(file.fileDescriptor) == 0) return;
  const std::error_code reason(errno, std::generic_category());
  throw PlatformError(reason.value(), reason.message());
}

/// Hands the file's content to the drive, which may keep it in its cache.
void writeOut(const FileURL& url) {
  withDescriptor(url, [](int descriptor) { return fsync(descriptor); });
}

/// Brings the file to the medium, and all that was handed to the drive before: F_FULLFSYNC empties
/// its cache. Not every file system knows that.
void flush(const FileURL& url) {
  withDescriptor(url, [](int descriptor) {
    return fcntl(descriptor, F_FULLFSYNC) == 0 ? 0 : fsync(descriptor);
  });
}

/// Shares the content where the volume can do that.
void copyItem(const FileURL& source, const FileURL& destination) {
  NSError* error = nil;
  if (![NSFileManager.defaultManager copyItemAtURL:nsURL(source)
                                             toURL:nsURL(destination)
                                             error:&error]) {
    throw platformError(error);
  }
}

/// Gives `replacement`, a file on the same volume, the name and the attributes of `original`.
void replaceItem(const FileURL& original, const FileURL& replacement) {
  NSError* error = nil;
  if (![NSFileManager.defaultManager replaceItemAtURL:nsURL(original)
                                        withItemAtURL:nsURL(replacement)
                                       backupItemName:nil
                                              options:0
                                     resultingItemURL:nil
                                                error:&error]) {
    throw platformError(error);
  }
}

bool canExchangeNames(const FileURL& url) {
  id answer = nil;
  [nsURL(url) getResourceValue:&answer forKey:NSURLVolumeSupportsSwapRenamingKey error:nil];
  return [answer boolValue];
}

}  // namespace

void replaceFile(const FileURL& original, const FileURL& replacement, const FileVersion& expected) {
  @autoreleasepool {
    // On the volume of the original, where alone it can be replaced in one step.
    auto folder = ItemReplacementDirectory::create(nsURL(original));
    FileURL fresh = folder.url().appendingPathComponent("content");
    writeOut(replacement);
    copyItem(replacement, fresh);

    ExchangeResult result = ExchangeResult::refused;
    if (canExchangeNames(original)) {
      const FileURL whole = folder.url().appendingPathComponent("whole");
      // For its attributes: those of a link are those of the file that it leads to.
      copyItem(fileURL(nsURL(original).URLByResolvingSymlinksInPath), whole);
      replaceItem(whole, fresh);
      fresh = whole;
      flush(fresh);
      result = exchangeFiles(original, fresh, expected);
    }
    switch (result) {
      case ExchangeResult::exchanged:
        break;
      case ExchangeResult::changed:
        throw changedMeanwhile(original);
      case ExchangeResult::stranded:
        folder.keep();
        throw changedTwice(original, fresh);
      case ExchangeResult::refused:
        flush(fresh);
        if (versionAt(original) != expected) throw changedMeanwhile(original);
        replaceItem(original, fresh);
    }
    // The original is replaced even if the source of the copy should refuse to go.
    [NSFileManager.defaultManager removeItemAtURL:nsURL(replacement) error:nil];
  }
}

}  // namespace kestrivane
