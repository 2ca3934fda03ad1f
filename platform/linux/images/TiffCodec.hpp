// TIFF (Adobe TIFF 6.0 and its technical notes) over libtiff.
//
// Read: strips and tiles, interleaved and planar, grey, palette, RGB, CMYK and YCbCr, whole numbers
// of 1 to 32 bits and floating point; the first picture of the file. Written: LZW with horizontal
// differencing, 8 or 16 bits, strips on all cores. Thread-safety and ownership: see `Codec`.
#pragma once

#include "platform/ImageIO.hpp"
#include "platform/linux/images/Codec.hpp"

namespace kestrivane {

namespace tiff {
bool recognise(std::span<const std::uint8_t> start);
PixelBuffer decode(const ImageInput& input);
PixelLayout encodedLayout(PixelLayout source);
void encode(PixelRows& picture, ImageOutput& output);
/// The same on at most `threads` threads, of which the bytes do not depend.
void encodeOn(std::size_t threads, const PixelRows& picture, ImageOutput& output);
}  // namespace tiff

inline constexpr Codec tiffCodec{.typeIdentifier = imageType::tiff,
                                 .recognise = tiff::recognise,
                                 .decode = tiff::decode,
                                 .encodedLayout = tiff::encodedLayout,
                                 .profileSupport = ProfileSupport::embedded,
                                 .encode = tiff::encode};

}  // namespace kestrivane
