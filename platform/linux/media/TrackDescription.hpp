// What is said about a track beside its content: language, turning, aspect, colours, times.
//
// Thread-safety: none. Ownership: none kept.
#pragma once

#include <cstdint>

struct AVStream;

namespace kestrivane {

/// Whether the content stays the same bytes; then everything that is said about them holds too.
enum class Content { copied, encoded };

/// Describes `target`, a track that is to be written, like `source`. Throws `PlatformError`.
void describeTrack(AVStream& target, const AVStream& source, Content content);

/// `startTime` (microseconds) in the time base of `stream`.
std::int64_t startTimeIn(const AVStream& stream, std::int64_t startTime);

}  // namespace kestrivane
