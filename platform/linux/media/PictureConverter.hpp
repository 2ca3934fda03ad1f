// Brings decoded frames into the size and pixel format that the encoder takes.
//
// Thread-safety: none; the library scales on all processors. Ownership: owns the frame that it
// hands out.
#pragma once

#include "platform/linux/media/LibavHandles.hpp"

namespace kestrivane {

class PictureConverter {
 public:
  /// How the frames are to be. The matrix and range hold for sources in RGB; others keep theirs.
  struct Target {
    int width;
    int height;
    AVPixelFormat format;
    AVColorSpace matrix;
    AVColorRange range;
  };

  explicit PictureConverter(const Target& target);

  /// The picture of `source` with its time and its order of fields; valid until the next call.
  /// Throws `PlatformError`.
  const AVFrame& convert(const AVFrame& source);

 private:
  /// What the scaler was made for.
  struct Layout {
    int width = 0;
    int height = 0;
    AVPixelFormat format = AV_PIX_FMT_NONE;

    friend bool operator==(const Layout&, const Layout&) = default;
  };

  void prepareScaler(const Layout& source, int fields);

  const Target target_;
  Frame frame_;
  Layout layout_;
  Scaler scaler_;
};

}  // namespace kestrivane
