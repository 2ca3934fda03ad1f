// The picture formats that can be read and written.
//
// Thread-safety and ownership: a constant.
#pragma once

#include <algorithm>
#include <array>

#include "platform/linux/images/BmpCodec.hpp"
#include "platform/linux/images/GifCodec.hpp"
#include "platform/linux/images/HeicCodec.hpp"
#include "platform/linux/images/IcoCodec.hpp"
#include "platform/linux/images/JpegCodec.hpp"
#include "platform/linux/images/PngCodec.hpp"
#include "platform/linux/images/TiffCodec.hpp"
#include "platform/linux/images/WebpCodec.hpp"

namespace kestrivane {

inline constexpr std::array codecs{jpegCodec, pngCodec,  heicCodec, tiffCodec,
                                   gifCodec,  webpCodec, bmpCodec,  icoCodec};

/// The codec of files that start with `start`, or null.
inline const Codec* codecRecognising(std::span<const std::uint8_t> start) {
  const auto codec =
      std::ranges::find_if(codecs, [start](const Codec& c) { return c.recognise(start); });
  return codec == codecs.end() ? nullptr : &*codec;
}

/// The codec that writes `typeIdentifier`, or null.
inline const Codec* codecWriting(std::string_view typeIdentifier) {
  const auto codec = std::ranges::find(codecs, typeIdentifier, &Codec::typeIdentifier);
  return codec == codecs.end() ? nullptr : &*codec;
}

}  // namespace kestrivane
