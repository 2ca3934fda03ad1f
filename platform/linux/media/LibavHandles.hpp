// The owners of the objects of libavformat, libavcodec, libswscale and libswresample, and the
// headers of these libraries.
//
// Thread-safety: none. Ownership: each releases what it holds.
#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

namespace kestrivane {

/// Releases by a function that takes the address of the pointer and clears it.
template <auto release>
struct ReleasedThroughAddress {
  template <typename Object>
  void operator()(Object* object) const {
    release(&object);
  }
};

template <auto release>
struct ReleasedThroughPointer {
  template <typename Object>
  void operator()(Object* object) const {
    release(object);
  }
};

using Packet = std::unique_ptr<AVPacket, ReleasedThroughAddress<av_packet_free>>;
using Frame = std::unique_ptr<AVFrame, ReleasedThroughAddress<av_frame_free>>;
using CodecContext = std::unique_ptr<AVCodecContext, ReleasedThroughAddress<avcodec_free_context>>;
using Resampler = std::unique_ptr<SwrContext, ReleasedThroughAddress<swr_free>>;
using Scaler = std::unique_ptr<SwsContext, ReleasedThroughPointer<sws_freeContext>>;
using SampleQueue = std::unique_ptr<AVAudioFifo, ReleasedThroughPointer<av_audio_fifo_free>>;

}  // namespace kestrivane
