// The module with the media libraries, which is loaded when the first film is opened: the libraries
// and what they bring along take 13 MB of memory, and most users rename no film for days.
//
// Thread-safety: may be called from any thread. Ownership: the bundle outlives it; a module that
// was loaded stays until the program ends, as there may always be an error or a film of it about.
#pragma once

#include <memory>
#include <mutex>

#include "platform/Bundle.hpp"
#include "platform/FileURL.hpp"
#include "platform/linux/media/OpenedMedia.hpp"

namespace kestrivane {

class MediaModule {
 public:
  /// Among the auxiliary executables of the bundle.
  static constexpr auto fileName = "kestrivane-media.so";
  /// What the module exports under the name `entryName`: `openMedia`. The caller owns the result.
  using Entry = OpenedMedia*(const FileURL&);
  static constexpr auto entryName = "kestrivaneOpenMedia";

  explicit MediaModule(const Bundle& bundle) : bundle_(bundle) {}

  /// As `openMedia`. Throws `PlatformError` with `ELIBACC` when the module cannot be loaded, and
  /// tries again the next time.
  std::unique_ptr<OpenedMedia> open(const FileURL& url);

 private:
  Entry& load();

  const Bundle& bundle_;
  std::mutex mutex_;
  Entry* entry_ = nullptr;  ///< null until loaded
};

}  // namespace kestrivane
