#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PngDeflater.hpp"

#include <algorithm>
#include <array>
#include <new>

#include <libdeflate.h>
#include <zlib.h>

#include "platform/linux/images/ImageError.hpp"

namespace kestrivane::png {
namespace {

/// zlib's reader of streams without a header.
class BlockReader {
 public:
  explicit BlockReader(std::span<std::uint8_t> stream) {
    constexpr int withoutHeader = -15;
    stream_.next_in = stream.data();
    stream_.avail_in = static_cast<uInt>(stream.size());
    if (inflateInit2(&stream_, withoutHeader) != Z_OK) throw std::bad_alloc();
  }
  BlockReader(const BlockReader&) = delete;
  BlockReader& operator=(const BlockReader&) = delete;
  ~BlockReader() { inflateEnd(&stream_); }

  /// Reads on into `scratch`, at most to the end of the present block.
  void read(std::span<std::uint8_t> scratch) {
    stream_.next_out = scratch.data();
    stream_.avail_out = static_cast<uInt>(scratch.size());
    if (inflate(&stream_, Z_BLOCK) != Z_OK)
      throw ImageError("the compressed picture cannot be read back");
  }

  // What zlib's manual says of `data_type` after Z_BLOCK.
  bool isAtEndOfBlock() const { return (stream_.data_type & 128) != 0; }
  bool isInLastBlock() const { return (stream_.data_type & 64) != 0; }
  std::size_t bitsRead() const {
    return stream_.total_in * 8 - static_cast<std::size_t>(stream_.data_type & 7);
  }
  std::size_t bytesWritten() const { return stream_.total_out; }

 private:
  z_stream stream_{};
};

}  // namespace

void Deflater::Free::operator()(libdeflate_compressor* compressor) const {
  libdeflate_free_compressor(compressor);
}

Deflater::Deflater(int level) : compressor_(libdeflate_alloc_compressor(level)) {
  if (!compressor_) throw std::bad_alloc();
}

std::span<const std::uint8_t> Deflater::compress(std::span<const std::uint8_t> bytes,
                                                 StreamEnd end) & {
  constexpr std::size_t roomToReopen = 8;
  const std::size_t bound = libdeflate_deflate_compress_bound(compressor_.get(), bytes.size());
  compressed_.resize(std::max(compressed_.size(), bound + roomToReopen));
  std::size_t size = libdeflate_deflate_compress(compressor_.get(), bytes.data(), bytes.size(),
                                                 compressed_.data(), bound);
  if (size == 0) throw ImageError("the picture cannot be compressed");
  if (end == StreamEnd::no) size = reopen(size, bytes.size());
  return std::span(compressed_).first(size);
}

std::size_t Deflater::reopen(std::size_t size, std::size_t expectedBytes) {
  readBack_.resize(32 * 1024);
  BlockReader reader{std::span(compressed_).first(size)};
  std::size_t lastBlock = 0;  // where its header starts, in bits
  while (!reader.isAtEndOfBlock() || !reader.isInLastBlock()) {
    reader.read(readBack_);
    if (reader.isAtEndOfBlock() && !reader.isInLastBlock()) lastBlock = reader.bitsRead();
  }
  if (reader.bytesWritten() != expectedBytes)
    throw ImageError("the compressed picture reads back differently");

  compressed_[lastBlock / 8] &= static_cast<std::uint8_t>(~(1U << lastBlock % 8));

  // The empty block: three zero bits, zero bits up to a whole byte, then its length.
  constexpr std::array<std::uint8_t, 4> noBytes = {0, 0, 0xFF, 0xFF};
  compressed_[size] = 0;
  const std::size_t length = (reader.bitsRead() + 3 + 7) / 8;
  std::ranges::copy(noBytes, compressed_.begin() + static_cast<std::ptrdiff_t>(length));
  return length + noBytes.size();
}

}  // namespace kestrivane::png
