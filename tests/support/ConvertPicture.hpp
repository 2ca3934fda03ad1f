// Converts one real picture by the whole `ImageConverter`, for programs that try many of them.
//
// Thread-safety: none needed; everything is made anew for each call.
#pragma once

#include "converters/ImageConverter.hpp"
#include "engine/ConversionError.hpp"
#include "tests/support/RunTask.hpp"

namespace kestrivane::test {

/// True if `target` has been written, false if the conversion was refused with a
/// `ConversionError`. Everything else that is thrown passes through.
inline bool convertPicture(const ImageIO& imageIO, const FileURL& source,
                           const FileURL& target) try {
  VirtualLoop loop;
  const ImageConverter converter(imageIO, loop);
  runTask(loop, converter.convert(source, target));
  return true;
} catch (const ConversionError&) {
  return false;
}

}  // namespace kestrivane::test
