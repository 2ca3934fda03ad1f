// The file system of Linux. Thread-safety: every operation may be called from any thread.
// Ownership: owns nothing but the name of its temporary folder.
#pragma once

#include "platform/FileManager.hpp"
#include "platform/linux/system/PrivateTemporaryDirectory.hpp"

namespace kestrivane {

class LinuxFileManager final : public FileManager {
 public:
  ItemKind kindOfItem(const FileURL& url) const override;
  FileURL resolvingSymbolicLinks(const FileURL& url) const override;
  bool hasRoom(const FileURL& folder) const override;
  void moveItem(const FileURL& source, const FileURL& destination) override;
  FileVersion versionOfItem(const FileURL& url) const override;
  void replaceItem(const FileURL& original, const FileURL& replacement,
                   const FileVersion& expected) override;
  FileURL temporaryDirectory() override;

 private:
  PrivateTemporaryDirectory temporaryDirectory_;
};

}  // namespace kestrivane
