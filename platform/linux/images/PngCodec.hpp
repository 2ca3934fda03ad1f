// PNG (ISO/IEC 15948, and the eXIf chunk), read by `png::read` and written by `png::write`.
//
// Read: every colour type and depth, interlaced or not; palettes and depths below eight bits are
// expanded. Written: grey, grey with alpha, RGB and RGBA of 8 or 16 bits, not interlaced.
// Thread-safety and ownership: see `Codec`.
#pragma once

#include "platform/ImageIO.hpp"
#include "platform/linux/images/Codec.hpp"

namespace kestrivane {

namespace png {
bool recognise(std::span<const std::uint8_t> start);
PixelBuffer decode(const ImageInput& input);
PixelLayout encodedLayout(PixelLayout source);
void encode(PixelRows& picture, ImageOutput& output);
}  // namespace png

inline constexpr Codec pngCodec{.typeIdentifier = imageType::png,
                                .recognise = png::recognise,
                                .decode = png::decode,
                                .encodedLayout = png::encodedLayout,
                                .profileSupport = ProfileSupport::embedded,
                                .encode = png::encode};

}  // namespace kestrivane
