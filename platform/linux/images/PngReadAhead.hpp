// The decompressed bytes of a picture in pieces of any size, decompressed ahead on a thread of
// their own where there are many: undoing the filters takes about half as long as decompressing, so
// both at once are done when decompressing is.
//
// Takes about a megabyte. Thread-safety: none; the inflater, and what it reads from, belong to the
// read-ahead until it is destroyed, which ends the thread. Ownership: borrows the inflater.
#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <span>
#include <stop_token>
#include <thread>
#include <vector>

#include "platform/linux/images/PngInflater.hpp"

namespace kestrivane::png {

class ReadAhead {
 public:
  /// Nothing is read before `start`.
  ReadAhead(Inflater& inflater, std::uint64_t totalBytes);

  /// Starts the thread if the bytes are many. Without it, they are decompressed when asked for.
  void start();

  /// The next `count` bytes, which stay until the next call; all calls together ask for no more
  /// than there are. Throws what decompressing throws.
  const std::uint8_t* take(std::size_t count);

 private:
  using Block = std::unique_ptr<std::uint8_t[]>;

  void work(const std::stop_token& stop) noexcept;
  void fill(std::uint64_t number);
  void nextBlock();
  std::size_t sizeOf(std::uint64_t number) const;

  Inflater& inflater_;
  const std::uint64_t totalBytes_;
  std::array<Block, 4> blocks_;         // one after the other, over and over
  std::span<const std::uint8_t> rest_;  // of the block that is being handed out
  std::vector<std::uint8_t> joined_;    // a piece that lies in several blocks
  std::uint64_t taken_ = 0;             // blocks, the one being handed out among them

  std::mutex mutex_;  // for everything below
  std::condition_variable_any changed_;
  std::uint64_t filled_ = 0;  // blocks
  std::uint64_t freed_ = 0;   // blocks, handed out to the end
  std::exception_ptr failure_;

  std::jthread thread_;  // the last member, so that it ends first
};

}  // namespace kestrivane::png
