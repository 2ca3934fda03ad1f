// The module with the library that downloads, which takes 4 MB of memory; it is needed once a day,
// and in most builds never.
//
// Thread-safety: may be called from any thread. Ownership: none kept.
#pragma once

#include "platform/Bundle.hpp"
#include "platform/linux/updates/Download.hpp"

namespace kestrivane::downloadModule {

inline constexpr auto fileName = "kestrivane-download.so";
inline constexpr auto entryName = "kestrivaneDownload";
using Entry = decltype(download);

/// `download`, by way of the module of `bundle`, which outlives it. Throws `PlatformError` also
/// when that cannot be loaded.
Downloader downloader(const Bundle& bundle);

}  // namespace kestrivane::downloadModule
