// JPEG (ITU-T T.81, JFIF, EXIF) over libjpeg-turbo.
//
// Read: baseline, progressive and arithmetic, grey, YCbCr, RGB, CMYK and YCCK, eight bits. Written:
// baseline YCbCr 4:2:0 or grey at quality 90. Thread-safety and ownership: see `Codec`.
#pragma once

#include "platform/ImageIO.hpp"
#include "platform/linux/images/Codec.hpp"

namespace kestrivane {

namespace jpeg {
bool recognise(std::span<const std::uint8_t> start);
PixelBuffer decode(const ImageInput& input);
PixelLayout encodedLayout(PixelLayout source);
void encode(PixelRows& picture, ImageOutput& output);
}  // namespace jpeg

inline constexpr Codec jpegCodec{.typeIdentifier = imageType::jpeg,
                                 .recognise = jpeg::recognise,
                                 .decode = jpeg::decode,
                                 .encodedLayout = jpeg::encodedLayout,
                                 .profileSupport = ProfileSupport::embedded,
                                 .encode = jpeg::encode};

}  // namespace kestrivane
