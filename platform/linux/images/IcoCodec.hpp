// ICO, the icon file of Windows.
//
// Read: the largest picture of the file, and the deepest of several that size, whether a PNG or a
// bitmap with its mask. Written: one picture of at most 256 x 256 pixels, as a PNG when a side
// has 256, else as a bitmap of 32 bits. Thread-safety: functions without state.
#pragma once

#include "platform/ImageIO.hpp"
#include "platform/linux/images/Codec.hpp"

namespace kestrivane::ico {

bool recognise(std::span<const std::uint8_t> start);
PixelBuffer decode(const ImageInput& input);
PixelLayout encodedLayout(PixelLayout source);
void encode(PixelRows& picture, ImageOutput& output);

}  // namespace kestrivane::ico

namespace kestrivane {

inline constexpr Codec icoCodec{.typeIdentifier = imageType::ico,
                                .recognise = ico::recognise,
                                .decode = ico::decode,
                                .encodedLayout = ico::encodedLayout,
                                .profileSupport = ProfileSupport::none,
                                .encode = ico::encode};

}  // namespace kestrivane
