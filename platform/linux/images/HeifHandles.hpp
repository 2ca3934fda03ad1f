// Owners of the handles of libheif, and its errors as exceptions.
//
// Thread-safety: none. Ownership: each releases what it holds.
#pragma once

#include <libheif/heif.h>

#include "platform/linux/images/ImageError.hpp"
#include "platform/linux/images/LibraryHandle.hpp"

namespace kestrivane::heic {

using Context = LibraryHandle<heif_context, heif_context_free>;
using HeifImage = LibraryHandle<heif_image, heif_image_release>;
using Encoder = LibraryHandle<heif_encoder, heif_encoder_release>;
using ColorNumbers = LibraryHandle<heif_color_profile_nclx, heif_nclx_color_profile_free>;

inline void check(const heif_error& error) {
  if (error.code != heif_error_Ok) throw ImageError(error.message);
}

}  // namespace kestrivane::heic
