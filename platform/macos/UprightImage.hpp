// Pictures as they are meant to be seen.
//
// Thread-safety: pure functions. Ownership: the caller owns what they return.
#pragma once

#include <CoreGraphics/CoreGraphics.h>
#include <ImageIO/ImageIO.h>

#include "platform/macos/CFReference.hpp"

namespace kestrivane {

/// How the picture at `index` is stored, from 1 to 8 as Exif counts (version 2.32, tag 274): which
/// edges of what is seen its first row and first column are. 1, upright, when the file does not
/// say.
int orientationAt(CGImageSourceRef source, std::size_t index);

/// `image` turned upright, with its colours and depth; itself when it already is. Null for null and
/// when there is no memory for a second picture.
CFReference<CGImageRef> upright(CFReference<CGImageRef> image, int orientation);

}  // namespace kestrivane
