// BMP, the bitmap file of Windows and of OS/2 1.x.
//
// Read: palettes of 1, 2, 4 and 8 bits, run lengths, 16, 24 and 32 bits with any bit masks, from
// the bottom or from the top, the embedded profile or the numbers that stand for one. Refused:
// pictures in JPEG or PNG, Huffman codes. Written: grey as a palette of 8 bits, opaque colours in
// 24 bits, transparent ones in 32 bits with a mask for alpha (BITMAPV4HEADER). Thread-safety:
// functions without state.
#pragma once

#include "platform/ImageIO.hpp"
#include "platform/linux/images/Codec.hpp"

namespace kestrivane::bmp {

bool recognise(std::span<const std::uint8_t> start);
PixelBuffer decode(const ImageInput& input);
PixelLayout encodedLayout(PixelLayout source);
void encode(PixelRows& picture, ImageOutput& output);

}  // namespace kestrivane::bmp

namespace kestrivane {

inline constexpr Codec bmpCodec{.typeIdentifier = imageType::bmp,
                                .recognise = bmp::recognise,
                                .decode = bmp::decode,
                                .encodedLayout = bmp::encodedLayout,
                                .profileSupport = ProfileSupport::none,
                                .encode = bmp::encode};

}  // namespace kestrivane
