#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/FileExchange.hpp"

#include <cstdint>

#include <stdio.h>
#include <sys/stat.h>

namespace kestrivane {
namespace {

bool rename(const FileURL& from, const FileURL& to, unsigned int flags) {
  return renamex_np(from.path().c_str(), to.path().c_str(), flags) == 0;
}

}  // namespace

FileVersion versionAt(const FileURL& url) {
  struct stat status;
  if (lstat(url.path().c_str(), &status) != 0) return {};
  return {.device = static_cast<std::uint64_t>(status.st_dev),
          .inode = status.st_ino,
          .size = status.st_size,
          .modifiedSeconds = status.st_mtimespec.tv_sec,
          .modifiedNanoseconds = status.st_mtimespec.tv_nsec};
}

ExchangeResult exchangeFiles(const FileURL& original, const FileURL& fresh,
                             const FileVersion& expected) {
  const FileVersion ours = versionAt(fresh);
  if (!rename(fresh, original, RENAME_SWAP)) return ExchangeResult::refused;
  if (versionAt(fresh) == expected) return ExchangeResult::exchanged;
  if (rename(fresh, original, RENAME_SWAP)) {
    // Somebody may have saved yet another file just before.
    return versionAt(fresh) == ours ? ExchangeResult::changed : ExchangeResult::stranded;
  }
  // The name has gone meanwhile: the file that was taken gets it back, if nothing else has it.
  return rename(fresh, original, RENAME_EXCL) ? ExchangeResult::changed : ExchangeResult::stranded;
}

}  // namespace kestrivane
