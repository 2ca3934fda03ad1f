// Lists directories with as few system calls as possible: large reads, and no stat for an entry
// whose kind the file system tells.
//
// Thread-safety: none; one listing at a time. Ownership: owns its buffer, not the directory.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "platform/linux/FileDescriptor.hpp"

namespace kestrivane {

class DirectoryListing {
 public:
  using Visitor = std::function<void(const char* name, bool isDirectory)>;

  /// Calls `visit` for every entry but "." and ".."; symbolic links are no directories. Names are
  /// valid during the call. A directory that cannot be read to its end ends early.
  void forEach(const FileDescriptor& directory, const Visitor& visit);

 private:
  static constexpr std::size_t bufferSize = std::size_t{32} * 1024;

  std::unique_ptr<std::byte[]> buffer_ = std::make_unique<std::byte[]>(bufferSize);
};

}  // namespace kestrivane
