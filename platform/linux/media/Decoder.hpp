// Turns the packets of a track into frames.
//
// Thread-safety: none; the library decodes on threads of its own. Ownership: owns the decoder.
#pragma once

#include "platform/linux/media/LibavHandles.hpp"
#include "platform/linux/media/MediaError.hpp"

namespace kestrivane {

class Decoder {
 public:
  /// Throws `PlatformError` when there is none for the track.
  explicit Decoder(const AVStream& source);

  /// Decodes `packet`, null after the last one, and calls `use` with each frame that is ready. A
  /// damaged packet is an error: throws `PlatformError`.
  template <typename Use>
  void decode(const AVPacket* packet, Use use) {
    checked(avcodec_send_packet(context_.get(), packet));
    while (receive()) {
      use(*frame_);
      av_frame_unref(frame_.get());
    }
  }

 private:
  bool receive();

  CodecContext context_;
  Frame frame_;
};

}  // namespace kestrivane
