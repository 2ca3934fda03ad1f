// The list of versions that a feed offers: RSS 2.0 with the attributes and elements of the
// namespace that updaters of desktop programs share.
//
// Thread-safety: values and a pure function.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrivane {

/// One version for one system. Texts are as they stand in the feed; nothing in it is to be trusted.
struct AppcastItem {
  std::string version;         ///< what is compared
  std::string displayVersion;  ///< what is shown; `version` if the feed gives none
  std::string address;         ///< of the archive
  std::uint64_t length = 0;    ///< of the archive, in bytes; 0 if the feed gives none
  std::string signature;       ///< of the archive: Ed25519 in Base64; empty if there is none
  std::string system;          ///< "linux", or empty for the system that the format comes from
  std::string channel;         ///< empty for releases
};

/// The items of `feed` that have a version and an archive, in its order. Throws `PlatformError` for
/// what is no well-formed RSS, has a document type declaration (which could define entities that
/// grow without end), or nests deeper than 32 elements.
std::vector<AppcastItem> parseAppcast(std::string_view feed);

/// The newest item for this system that is newer than `currentVersion`, is no test version and
/// carries a signature; of equal versions the first.
std::optional<AppcastItem> newestUpdate(const std::vector<AppcastItem>& items,
                                        std::string_view currentVersion);

}  // namespace kestrivane
