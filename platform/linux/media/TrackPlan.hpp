// What becomes of each track of a film.
//
// Thread-safety: pure functions. Ownership: none.
#pragma once

#include <span>
#include <vector>

#include "platform/AssetExportSession.hpp"

struct AVStream;

namespace kestrivane {

enum class Treatment { copy, encode, leaveOut };

/// One for each track. What the container cannot hold is left out; but when that would be all of
/// the sound or all of the video, throws `PlatformError`.
std::vector<Treatment> planTracks(std::span<AVStream* const> tracks, MediaFileType fileType);

}  // namespace kestrivane
