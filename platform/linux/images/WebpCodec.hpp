// WebP (RFC 9649), over libwebp.
//
// Read: lossy and lossless pictures, the first one of an animation laid on its canvas, which is
// transparent around it. Written: lossy, at quality 85, with lossless alpha. The longest side is
// 16,383 pixels. Thread-safety: functions without state.
#pragma once

#include "platform/ImageIO.hpp"
#include "platform/linux/images/Codec.hpp"

namespace kestrivane::webp {

bool recognise(std::span<const std::uint8_t> start);
PixelBuffer decode(const ImageInput& input);
PixelLayout encodedLayout(PixelLayout source);
void encode(PixelRows& picture, ImageOutput& output);

}  // namespace kestrivane::webp

namespace kestrivane {

inline constexpr Codec webpCodec{.typeIdentifier = imageType::webp,
                                 .recognise = webp::recognise,
                                 .decode = webp::decode,
                                 .encodedLayout = webp::encodedLayout,
                                 .profileSupport = ProfileSupport::embedded,
                                 .encode = webp::encode};

}  // namespace kestrivane
