// Fetches the archive of an update and keeps it only if it is what the feed's maker signed.
//
// Thread-safety: a free function; blocks until the archive is there.
#pragma once

#include <atomic>

#include "platform/FileURL.hpp"
#include "platform/linux/updates/Appcast.hpp"
#include "platform/linux/updates/Download.hpp"
#include "platform/linux/updates/EdSignature.hpp"

namespace kestrivane {

/// Downloads the archive of `item` into `folder` and returns where it is: named as in the feed,
/// with a number added if the name is taken. Until its signature has been verified it has no name
/// at all, so a failure leaves nothing behind. Throws `PlatformError` when it cannot be fetched or
/// stored, is longer than a gigabyte, has another length than the feed says, or is not signed by
/// `key`.
FileURL fetchArchive(const Downloader& download, const AppcastItem& item, const EdPublicKey& key,
                     const FileURL& folder, const std::atomic<bool>& cancelled);

}  // namespace kestrivane
