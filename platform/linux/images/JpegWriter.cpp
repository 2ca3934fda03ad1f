#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include <array>
#include <memory>
#include <vector>

#include "platform/linux/images/JpegCodec.hpp"
#include "platform/linux/images/JpegErrors.hpp"

namespace kestrivane::jpeg {
namespace {

constexpr int quality = 90;
constexpr std::size_t outputBufferSize = 64 * 1024;

struct Destination : jpeg_destination_mgr {
  explicit Destination(ImageOutput& to) : jpeg_destination_mgr(), output(to) {
    init_destination = [](j_compress_ptr codec) {
      static_cast<Destination*>(codec->dest)->startBuffer();
    };
    empty_output_buffer = [](j_compress_ptr codec) -> boolean {
      auto& self = *static_cast<Destination*>(codec->dest);
      self.output.write(self.buffer);
      self.startBuffer();
      return TRUE;
    };
    term_destination = [](j_compress_ptr codec) {
      auto& self = *static_cast<Destination*>(codec->dest);
      self.output.write(std::span(self.buffer).first(outputBufferSize - self.free_in_buffer));
    };
  }

  void startBuffer() {
    next_output_byte = buffer.data();
    free_in_buffer = outputBufferSize;
  }

  ImageOutput& output;
  std::array<std::uint8_t, outputBufferSize> buffer;
};

class Encoder {
 public:
  explicit Encoder(ImageOutput& output) : destination_(output) {
    codec_.err = &errors_;
    guarded(errors_, [this] { jpeg_create_compress(&codec_); });
    codec_.dest = &destination_;
  }
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;
  ~Encoder() { jpeg_destroy_compress(&codec_); }

  void encode(const PixelRows& picture) {
    const std::span<const std::uint8_t> profile = picture.iccProfile();
    std::vector<std::uint8_t> scratch(picture.scratchBytes());
    codec_.image_width = static_cast<JDIMENSION>(picture.width());
    codec_.image_height = static_cast<JDIMENSION>(picture.height());
    codec_.in_color_space = picture.layout().isGrey() ? JCS_GRAYSCALE : JCS_RGB;
    codec_.input_components = static_cast<int>(picture.layout().channelCount());
    guarded(errors_, [&] {
      jpeg_set_defaults(&codec_);
      jpeg_set_quality(&codec_, quality, TRUE);
      codec_.dct_method = JDCT_ISLOW;
      jpeg_start_compress(&codec_, TRUE);
      if (!profile.empty())
        jpeg_write_icc_profile(&codec_, profile.data(), static_cast<unsigned>(profile.size()));
      while (codec_.next_scanline < codec_.image_height) {
        // libjpeg does not write to the rows that it compresses.
        auto* row = const_cast<JSAMPROW>(picture.row(codec_.next_scanline, scratch.data()));
        jpeg_write_scanlines(&codec_, &row, 1);
      }
      jpeg_finish_compress(&codec_);
    });
  }

 private:
  Errors errors_;
  Destination destination_;
  jpeg_compress_struct codec_{};
};

}  // namespace

PixelLayout encodedLayout(PixelLayout source) {
  return {source.isGrey() ? Channels::grey : Channels::rgb, Depth::eight};
}

void encode(PixelRows& picture, ImageOutput& output) {
  std::make_unique<Encoder>(output)->encode(picture);
}

}  // namespace kestrivane::jpeg
