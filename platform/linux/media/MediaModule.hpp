// The module with the media libraries, which take 13 MB of memory; most users rename no film for
// days.
//
// Thread-safety: may be called from any thread. Ownership: none kept.
#pragma once

#include <memory>

#include "platform/Bundle.hpp"
#include "platform/FileURL.hpp"
#include "platform/linux/media/OpenedMedia.hpp"

namespace kestrivane::mediaModule {

inline constexpr auto fileName = "kestrivane-media.so";
inline constexpr auto entryName = "kestrivaneOpenMedia";
/// `openMedia`. The caller owns the result.
using Entry = OpenedMedia*(const FileURL& url);

/// As `openMedia`, by way of the module of `bundle`. Throws `PlatformError` also when that cannot
/// be loaded.
std::unique_ptr<OpenedMedia> open(const Bundle& bundle, const FileURL& url);

}  // namespace kestrivane::mediaModule
