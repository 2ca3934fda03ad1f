// Owners of the handles of libheif, and its errors as exceptions.
//
// Thread-safety: none. Ownership: each releases what it holds.
#pragma once

#include <memory>

#include <libheif/heif.h>

#include "platform/linux/images/ImageError.hpp"

namespace kestrivane::heic {

template <auto release>
struct Releaser {
  template <typename Handle>
  void operator()(Handle* handle) const {
    release(handle);
  }
};

using Context = std::unique_ptr<heif_context, Releaser<heif_context_free>>;
using ImageHandle = std::unique_ptr<heif_image_handle, Releaser<heif_image_handle_release>>;
using HeifImage = std::unique_ptr<heif_image, Releaser<heif_image_release>>;
using Encoder = std::unique_ptr<heif_encoder, Releaser<heif_encoder_release>>;
using DecodingOptions =
    std::unique_ptr<heif_decoding_options, Releaser<heif_decoding_options_free>>;
using ColorNumbers =
    std::unique_ptr<heif_color_profile_nclx, Releaser<heif_nclx_color_profile_free>>;

inline void check(const heif_error& error) {
  if (error.code != heif_error_Ok) throw ImageError(error.message);
}

}  // namespace kestrivane::heic
