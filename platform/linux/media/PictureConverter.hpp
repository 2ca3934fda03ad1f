// Brings decoded frames into the size and pixel format that the encoder takes.
//
// Thread-safety: none. Ownership: owns the frame that it hands out.
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
  void scale(const AVFrame& source, int field, int fields);
  void prepareScaler(const AVFrame& source, int fields);

  const Target target_;
  Frame frame_;
  Scaler scaler_;
};

}  // namespace kestrivane
