// GIF (CompuServe GIF89a), over giflib.
//
// Read: the first picture, laid on the screen, which is transparent around it and grows if the
// picture does not fit. Written: one picture with at most 256 colours, dithered when it has more;
// one of them stands for pixels whose alpha is below one half. Thread-safety: functions without
// state.
#pragma once

#include "platform/ImageIO.hpp"
#include "platform/linux/images/Codec.hpp"

namespace kestrivane::gif {

bool recognise(std::span<const std::uint8_t> start);
PixelBuffer decode(const ImageInput& input);
PixelLayout encodedLayout(PixelLayout source);
void encode(PixelRows& picture, ImageOutput& output);

}  // namespace kestrivane::gif

namespace kestrivane {

inline constexpr Codec gifCodec{.typeIdentifier = imageType::gif,
                                .recognise = gif::recognise,
                                .decode = gif::decode,
                                .encodedLayout = gif::encodedLayout,
                                .profileSupport = ProfileSupport::none,
                                .encode = gif::encode};

}  // namespace kestrivane
