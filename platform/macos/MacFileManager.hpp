// The file system by Foundation's file manager. What it cannot tell (which file stands under a
// name, where a path leads) the system is asked directly.
//
// Thread-safety: every operation may be called from any thread. Ownership: none.
#pragma once

#include "platform/FileManager.hpp"

namespace kestrivane {

class MacFileManager final : public FileManager {
 public:
  ItemKind kindOfItem(const FileURL& url) const override;
  FileURL resolvingSymbolicLinks(const FileURL& url) const override;
  bool hasRoom(const FileURL& folder) const override;
  void moveItem(const FileURL& source, const FileURL& destination) override;
  FileVersion versionOfItem(const FileURL& url) const override;

  /// On a volume that cannot exchange names, a change that falls between the check of the version
  /// and the replacement right after it is not seen. If `original` changes more than once while it
  /// is replaced, the version that cannot be put back is kept, and the error says where.
  void replaceItem(const FileURL& original, const FileURL& replacement,
                   const FileVersion& expected) override;

  /// The container's own in a sandbox, else the user's.
  FileURL temporaryDirectory() override;
};

}  // namespace kestrivane
