// HEIC (ISO/IEC 23008-12, HEVC inside), decoded by libde265 and encoded by libheif with x265.
//
// Read: the primary picture, single or in a grid, colour or grey, 8 to 16 bits, with alpha.
// Written: 4:2:0 of full range, or grey; 8 bits, or 10 for pictures of depth sixteen; large ones in
// a grid, whose tiles are encoded side by side. Thread-safety and ownership: see `Codec`.
#pragma once

#include "platform/ImageIO.hpp"
#include "platform/linux/images/Codec.hpp"

namespace kestrivane {

namespace heic {
bool recognise(std::span<const std::uint8_t> start);
PixelBuffer decode(const ImageInput& input);
PixelLayout encodedLayout(PixelLayout source);
void encode(PixelRows& picture, ImageOutput& output);
}  // namespace heic

inline constexpr Codec heicCodec{.typeIdentifier = imageType::heic,
                                 .recognise = heic::recognise,
                                 .decode = heic::decode,
                                 .encodedLayout = heic::encodedLayout,
                                 .profileSupport = ProfileSupport::embedded,
                                 .encode = heic::encode};

}  // namespace kestrivane
