// Turns frames into the packets of a track and writes them.
//
// Thread-safety: none; the library encodes on threads of its own. Ownership: owns the encoder;
// refers to the output, which outlives it.
#pragma once

#include <cstdint>
#include <map>

#include "platform/linux/media/LibavHandles.hpp"
#include "platform/linux/media/MediaOutput.hpp"

namespace kestrivane {

class Encoder {
 public:
  /// Opens the encoder that `context` describes and adds its track to `output`. Takes over what
  /// `options` holds. Throws `PlatformError`.
  Encoder(CodecContext context, AVDictionary* options, MediaOutput& output);

  const AVCodecContext& context() const { return *context_; }
  AVStream& track() { return track_; }

  /// Encodes `frame`, null after the last one, and writes the packets that are ready. Throws
  /// `PlatformError`.
  void encode(const AVFrame* frame);

 private:
  bool receive();

  CodecContext context_;
  MediaOutput& output_;
  AVStream& track_;
  Packet packet_;
  /// By time stamp; frames leave some video encoders without their durations, in another order.
  std::map<std::int64_t, std::int64_t> durations_;
};

}  // namespace kestrivane
