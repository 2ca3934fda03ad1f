// Looks at what another program has made of a film.
//
// Thread-safety: may be called from any thread, by several at once; blocks it. Ownership: none
// kept.
#pragma once

#include "platform/FileURL.hpp"

namespace kestrivane {

class MediaInspector {
 public:
  MediaInspector() = default;
  MediaInspector(const MediaInspector&) = delete;
  MediaInspector& operator=(const MediaInspector&) = delete;
  virtual ~MediaInspector() = default;

  /// Whether the sound or the video of `result` ends before that of `source` does, from which it
  /// was converted. Kinds that `result` does not have are not asked for. False also when it cannot
  /// be told, because one of the two is in no format that is known. Throws `PlatformError` when the
  /// system cannot read one of the two to its end.
  virtual bool isCutShort(const FileURL& result, const FileURL& source) const = 0;
};

}  // namespace kestrivane
