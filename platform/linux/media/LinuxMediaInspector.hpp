// Compares films with the FFmpeg libraries, in this process.
//
// Thread-safety: as the interface says. Ownership: refers to the bundle, which outlives it.
#pragma once

#include "platform/Bundle.hpp"
#include "platform/MediaInspector.hpp"

namespace kestrivane {

class LinuxMediaInspector final : public MediaInspector {
 public:
  /// The libraries are in a module of `bundle`.
  explicit LinuxMediaInspector(const Bundle& bundle) : bundle_(bundle) {}

  /// Throws `PlatformError` also when the module cannot be loaded.
  bool isCutShort(const FileURL& result, const FileURL& source) const override;

 private:
  const Bundle& bundle_;
};

}  // namespace kestrivane
