// Compression of strips that together make one deflate stream (RFC 1951), so that strips can be
// compressed at the same time.
//
// libdeflate compresses a whole buffer fastest and tightest, but always ends the stream. For a
// strip that others follow, the end is taken back: a reader that stops at blocks finds the last
// one, which then is marked as not the last and followed by an empty block up to a whole byte.
// That reader is another library, so each such strip is also known to be readable. Thread-safety:
// none. Ownership: owns its compressor and its buffers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

struct libdeflate_compressor;

namespace kestrivane::png {

/// Whether more of the stream follows.
enum class StreamEnd : bool { no, yes };

class Deflater {
 public:
  /// `level` as libdeflate has it, from 1 (fast) to 12 (small).
  explicit Deflater(int level);

  /// The compressed bytes, which stay until the next call. The next strip does not refer to this
  /// one's bytes.
  std::span<const std::uint8_t> compress(std::span<const std::uint8_t> bytes, StreamEnd end) &;

 private:
  std::size_t reopen(std::size_t size, std::size_t expectedBytes);

  struct Free {
    void operator()(libdeflate_compressor* compressor) const;
  };
  std::unique_ptr<libdeflate_compressor, Free> compressor_;
  std::vector<std::uint8_t> compressed_;
  std::vector<std::uint8_t> readBack_;
};

}  // namespace kestrivane::png
