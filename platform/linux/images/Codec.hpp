// What a picture format is to `LinuxImageIO`: one row of the codec table.
//
// Each format has a file pair with these functions in a namespace of its own and its row at the end
// of the header. The functions keep no state and may run on any number of threads at once.
// Failures, `std::bad_alloc` among them, are exceptions.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "platform/linux/images/ImageInput.hpp"
#include "platform/linux/images/ImageOutput.hpp"
#include "platform/linux/images/PixelBuffer.hpp"
#include "platform/linux/images/PixelRows.hpp"

namespace kestrivane {

/// As many first bytes of a file as `Codec::recognise` may look at.
inline constexpr std::size_t recognisedBytes = 32;

struct Codec {
  std::string_view typeIdentifier;  ///< one of `imageType`

  /// Whether a file that starts with `start` is of this format. `start` is shorter than
  /// `recognisedBytes` only when the file is.
  bool (*recognise)(std::span<const std::uint8_t> start);

  /// Decodes the first picture, upright, with its profile, everything else dropped. Throws
  /// `ImageError` when it is damaged anywhere, cut short, too large or of an unknown kind.
  PixelBuffer (*decode)(const ImageInput& input);

  /// The layout in which `encode` wants to be handed a picture that has `source`; equal to `source`
  /// whenever the format can hold it. Pictures that are wholly opaque come without alpha.
  PixelLayout (*encodedLayout)(PixelLayout source);

  ProfileSupport profileSupport;

  /// Writes the picture and nothing else: no metadata but the profile. May let go of the pixels
  /// (`PixelRows::release`) as soon as it has read them. Throws `ImageError` when the format cannot
  /// hold the picture; errors of the file itself are left to `ImageOutput::finish`.
  void (*encode)(PixelRows& picture, ImageOutput& output);
};

}  // namespace kestrivane
