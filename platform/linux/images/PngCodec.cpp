#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PngCodec.hpp"

#include <algorithm>
#include <array>

#include "platform/linux/images/PngChunk.hpp"
#include "platform/linux/images/PngReader.hpp"
#include "platform/linux/images/PngWriter.hpp"

namespace kestrivane::png {

bool recognise(std::span<const std::uint8_t> start) {
  return start.size() >= signature.size() &&
         std::equal(signature.begin(), signature.end(), start.begin());
}

PixelBuffer decode(const ImageInput& input) {
  std::array<std::uint8_t, signature.size()> start{};
  input.readAt(0, start);
  if (!recognise(start)) throw ImageError("the file is no PNG");
  return read(input);
}

PixelLayout encodedLayout(PixelLayout source) {
  return source;
}

void encode(PixelRows& picture, ImageOutput& output) {
  write(picture, output);
}

}  // namespace kestrivane::png
