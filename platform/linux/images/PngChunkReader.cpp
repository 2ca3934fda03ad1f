#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PngChunkReader.hpp"

#include <algorithm>

#include <libdeflate.h>

#include "platform/linux/images/ImageError.hpp"
#include "platform/linux/images/PngChunk.hpp"

namespace kestrivane::png {
namespace {

constexpr std::size_t bufferBytes = 64 * 1024;
constexpr std::uint32_t maximumLength = 0x7FFF'FFFF;

bool isLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

}  // namespace

ChunkReader::ChunkReader(const ImageInput& input)
    : input_(input), offset_(signature.size()), buffer_(bufferBytes) {}

void ChunkReader::next() {
  if (typeSize_ > 0) finish();
  const std::uint32_t length = fromBigEndian(take(4).first<4>());
  std::ranges::copy(take(4), type_.begin());
  typeSize_ = type_.size();
  if (length > maximumLength || !std::ranges::all_of(type_, isLetter))
    throw ImageError("the PNG has a damaged chunk");
  if (length > input_.size()) throw ImageError("the file is cut short");
  left_ = length;
  checksum_ = chunkChecksum(type(), {});
}

void ChunkReader::finish() {
  while (!read().empty()) {
  }
  if (fromBigEndian(take(4).first<4>()) != checksum_)
    throw ImageError("the PNG has a damaged chunk");
}

std::span<const std::uint8_t> ChunkReader::read() {
  if (left_ == 0) return {};
  if (next_ == end_) refill();
  const auto bytes = take(std::min(left_, end_ - next_));
  if (bytes.empty()) throw ImageError("the file is cut short");
  left_ -= bytes.size();
  checksum_ = libdeflate_crc32(checksum_, bytes.data(), bytes.size());
  return bytes;
}

std::vector<std::uint8_t> ChunkReader::readAll() {
  std::vector<std::uint8_t> content;
  content.reserve(left_);
  for (auto bytes = read(); !bytes.empty(); bytes = read())
    content.insert(content.end(), bytes.begin(), bytes.end());
  return content;
}

/// The next `count` bytes of the file, no more than fit the buffer.
std::span<const std::uint8_t> ChunkReader::take(std::size_t count) {
  if (end_ - next_ < count) refill();
  if (end_ - next_ < count) throw ImageError("the file is cut short");
  next_ += count;
  return std::span(buffer_).subspan(next_ - count, count);
}

void ChunkReader::refill() {
  std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(next_),
            buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
  end_ -= next_;
  next_ = 0;
  const std::size_t count = input_.readUpTo(offset_, std::span(buffer_).subspan(end_));
  offset_ += count;
  end_ += count;
}

}  // namespace kestrivane::png
