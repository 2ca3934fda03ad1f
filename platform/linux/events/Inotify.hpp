// One inotify instance: one queue of events for any number of watched directories.
//
// The kernel lets a user have 128 instances by default, so one serves everything. A directory has
// one watch in an instance, however often it is added. Thread-safety: watches may be added and
// removed by any thread while another one reads. Ownership: owns the descriptor; the kernel ends
// all watches with it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include <sys/inotify.h>

#include "platform/linux/FileDescriptor.hpp"

namespace kestrivane {

/// One event as the kernel queued it; inotify(7) lists the bits of `mask`.
struct RawEvent {
  int watch;              ///< -1 with `IN_Q_OVERFLOW`
  std::uint32_t mask;     ///< of `IN_…`
  std::uint32_t cookie;   ///< the same in both halves of a rename
  std::string_view name;  ///< of the item in the directory; empty for the directory itself
};

class Inotify {
 public:
  /// Throws `PlatformError`, with `EMFILE` when the user or the process has no instance left.
  static std::unique_ptr<Inotify> create();

  int descriptor() const { return descriptor_.get(); }

  /// The watch of the directory that `path` names, symbolic links in the last component not
  /// followed; a negated `errno` when there is none.
  int addWatch(const char* path) const;

  /// Does nothing for a watch that the kernel has already ended.
  void removeWatch(int watch) const;

  /// The next events of the queue, without waiting; empty when there are none. They are valid until
  /// the next call.
  const std::vector<RawEvent>& read();

 private:
  explicit Inotify(FileDescriptor descriptor) : descriptor_(std::move(descriptor)) {}

  static constexpr std::size_t bufferSize = std::size_t{64} * 1024;

  FileDescriptor descriptor_;
  std::unique_ptr<std::byte[]> buffer_ = std::make_unique<std::byte[]>(bufferSize);
  std::vector<RawEvent> events_;
};

}  // namespace kestrivane
