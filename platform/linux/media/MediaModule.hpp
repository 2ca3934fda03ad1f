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

/// `openMedia`. The caller owns the result.
inline constexpr auto openName = "kestrivaneOpenMedia";
using Open = OpenedMedia*(const FileURL& url);

/// `isCutShort`.
inline constexpr auto isCutShortName = "kestrivaneIsMediaCutShort";
using IsCutShort = bool(const FileURL& result, const FileURL& source);

/// As `openMedia`, by way of the module of `bundle`. Throws `PlatformError` also when that cannot
/// be loaded.
std::unique_ptr<OpenedMedia> open(const Bundle& bundle, const FileURL& url);

/// As `MediaInspector::isCutShort`, in the same way.
bool isCutShort(const Bundle& bundle, const FileURL& result, const FileURL& source);

}  // namespace kestrivane::mediaModule
