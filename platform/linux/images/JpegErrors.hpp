// What libjpeg reports while it works on one picture, as exceptions.
//
// Thread-safety: none. Ownership: the errors outlive the codec that points to them.
#pragma once

#include <array>
#include <csetjmp>
#include <cstdio>

#include <jpeglib.h>
// After jpeglib.h, whose types it uses.
#include <jerror.h>

#include "platform/linux/images/ImageError.hpp"

namespace kestrivane::jpeg {

/// libjpeg reports an error by a function that must not return: it jumps to the latest `guarded`.
struct Errors : jpeg_error_mgr {
  Errors() {
    jpeg_std_error(this);
    error_exit = [](j_common_ptr codec) { static_cast<Errors*>(codec->err)->fail(codec); };
    emit_message = [](j_common_ptr codec, int level) {
      auto& self = *static_cast<Errors*>(codec->err);
      if (level < 0 && !self.isHarmless()) self.fail(codec);
    };
    output_message = [](j_common_ptr) {};
  }

  [[noreturn]] void fail(j_common_ptr codec) {
    format_message(codec, message.data());
    std::longjmp(jump, 1);
  }

  /// Whether the latest warning leaves the picture whole. Any other stands for damaged or missing
  /// data.
  bool isHarmless() const {
    switch (msg_code) {
      case JWRN_JFIF_MAJOR:
      case JWRN_ADOBE_XFORM:
      case JWRN_BOGUS_ICC:
      case JWRN_NOT_SEQUENTIAL:  // odd parameters of a scan, which mean nothing there
        return true;
      case JWRN_EXTRANEOUS_DATA:
        // Cameras and editors leave bytes between the segments of the header. Behind the start of
        // the pixels they would be pixels that went astray.
        return !pixelsBegan;
      default:
        return false;
    }
  }

  bool pixelsBegan = false;
  std::jmp_buf jump{};
  std::array<char, JMSG_LENGTH_MAX> message{};
};

/// Runs calls of libjpeg and throws what they report. A jump leaves `calls` without destroying
/// anything, so it has no local variables that need it.
template <typename Calls>
void guarded(Errors& errors, Calls calls) {
  if (setjmp(errors.jump) != 0) throw ImageError(errors.message.data());
  calls();
}

}  // namespace kestrivane::jpeg
