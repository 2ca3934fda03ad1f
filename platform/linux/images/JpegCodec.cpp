#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/JpegCodec.hpp"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <jpeglib.h>
// After jpeglib.h, whose types it uses.
#include <jerror.h>

#include "platform/linux/images/Cmyk.hpp"
#include "platform/linux/images/ExifOrientation.hpp"
#include "platform/linux/images/UprightRows.hpp"

namespace kestrivane::jpeg {
namespace {

constexpr int quality = 90;
constexpr std::size_t bufferSize = 64 * 1024;
/// A scan of a few bytes may stand for the whole area. Encoders make about ten; small pictures may
/// have one for each frequency.
int maximumScans(std::uint64_t area) {
  constexpr std::uint64_t pixelsOfAllScans = std::uint64_t{1} << 30;
  return static_cast<int>(std::clamp<std::uint64_t>(pixelsOfAllScans / area, 16, 64));
}

constexpr int exifMarker = JPEG_APP0 + 1;
constexpr int iccMarker = JPEG_APP0 + 2;

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

struct Source : jpeg_source_mgr {
  explicit Source(const ImageInput& from) : jpeg_source_mgr(), input(from) {
    init_source = [](j_decompress_ptr) {};
    fill_input_buffer = [](j_decompress_ptr codec) -> boolean {
      auto& self = *static_cast<Source*>(codec->src);
      self.bytes_in_buffer = self.input.readUpTo(self.offset, self.buffer);
      if (self.bytes_in_buffer == 0) ERREXIT(codec, JERR_INPUT_EOF);
      self.next_input_byte = self.buffer.data();
      self.offset += self.bytes_in_buffer;
      return TRUE;
    };
    skip_input_data = [](j_decompress_ptr codec, long count) {
      auto& self = *static_cast<Source*>(codec->src);
      const auto wanted = static_cast<std::size_t>(std::max(count, 0L));
      const std::size_t buffered = std::min(wanted, self.bytes_in_buffer);
      self.next_input_byte += buffered;
      self.bytes_in_buffer -= buffered;
      self.offset += wanted - buffered;
    };
    resync_to_restart = jpeg_resync_to_restart;
    term_source = [](j_decompress_ptr) {};
  }

  const ImageInput& input;
  std::uint64_t offset = 0;  // of the byte after the buffer
  std::array<std::uint8_t, bufferSize> buffer;
};

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
      self.output.write(std::span(self.buffer).first(bufferSize - self.free_in_buffer));
    };
  }

  void startBuffer() {
    next_output_byte = buffer.data();
    free_in_buffer = bufferSize;
  }

  ImageOutput& output;
  std::array<std::uint8_t, bufferSize> buffer;
};

class Decoder {
 public:
  explicit Decoder(const ImageInput& input) : source_(input) {
    codec_.err = &errors_;
    guarded(errors_, [this] { jpeg_create_decompress(&codec_); });
    codec_.src = &source_;
    progress_.progress_monitor = [](j_common_ptr codec) {
      const auto& self = *reinterpret_cast<j_decompress_ptr>(codec);
      const std::uint64_t area = std::uint64_t{self.image_width} * self.image_height;
      if (self.input_scan_number > maximumScans(area)) ERREXIT(codec, JERR_BAD_PROGRESSION);
    };
    codec_.progress = &progress_;
  }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;
  ~Decoder() { jpeg_destroy_decompress(&codec_); }

  PixelBuffer decode() {
    readHeader();
    checkArea(codec_.image_width, codec_.image_height);
    std::vector<std::uint8_t> profile = readProfile();
    const Orientation orientation = readOrientation();
    errors_.pixelsBegan = true;
    guarded(errors_, [this] { jpeg_start_decompress(&codec_); });
    const Channels channels =
        codec_.out_color_space == JCS_GRAYSCALE ? Channels::grey : Channels::rgb;
    UprightRows rows(codec_.output_width, codec_.output_height, {channels, Depth::eight},
                     orientation);
    const bool hasInks = codec_.out_color_space == JCS_CMYK;
    if (hasInks)
      readCmykRows(rows, profile);
    else
      readRows(rows);
    guarded(errors_, [this] { jpeg_finish_decompress(&codec_); });
    PixelBuffer picture = rows.take();
    if (!hasInks) picture.iccProfile = std::move(profile);
    return picture;
  }

 private:
  void readHeader() {
    guarded(errors_, [this] {
      jpeg_save_markers(&codec_, exifMarker, 0xFFFF);
      jpeg_save_markers(&codec_, iccMarker, 0xFFFF);
      jpeg_read_header(&codec_, TRUE);
    });
    switch (codec_.jpeg_color_space) {
      case JCS_GRAYSCALE:
        codec_.out_color_space = JCS_GRAYSCALE;
        break;
      case JCS_YCbCr:
      case JCS_RGB:
        codec_.out_color_space = JCS_RGB;
        break;
      case JCS_CMYK:
      case JCS_YCCK:
        codec_.out_color_space = JCS_CMYK;
        break;
      default:
        throw ImageError("the JPEG's colour space is unknown");
    }
    codec_.dct_method = JDCT_ISLOW;
  }

  std::vector<std::uint8_t> readProfile() {
    JOCTET* bytes = nullptr;
    unsigned int count = 0;
    guarded(errors_, [&] { jpeg_read_icc_profile(&codec_, &bytes, &count); });
    const std::unique_ptr<JOCTET, decltype(&std::free)> owner(bytes, &std::free);
    return {bytes, bytes + count};
  }

  Orientation readOrientation() const {
    constexpr std::array<std::uint8_t, 6> start = {'E', 'x', 'i', 'f', 0, 0};
    for (auto* marker = codec_.marker_list; marker != nullptr; marker = marker->next) {
      const std::span data(marker->data, marker->data_length);
      if (marker->marker == exifMarker && data.size() > start.size() &&
          std::equal(start.begin(), start.end(), data.begin()))
        return exifOrientation(data);
    }
    return Orientation::topLeft;
  }

  void readRows(UprightRows& rows) {
    guarded(errors_, [&] {
      for (; codec_.output_scanline < codec_.output_height; rows.advance()) {
        JSAMPROW row = rows.next();
        jpeg_read_scanlines(&codec_, &row, 1);
      }
    });
  }

  void readCmykRows(UprightRows& rows, std::span<const std::uint8_t> profile) {
    // Adobe's programs, which mark their files, store the amount of white instead of ink.
    const CmykConversion conversion(
        profile, Depth::eight,
        codec_.saw_Adobe_marker ? InkPolarity::zeroIsFull : InkPolarity::zeroIsNone);
    std::vector<std::uint8_t> inks(std::size_t{codec_.output_width} * 4);
    guarded(errors_, [&] {
      for (; codec_.output_scanline < codec_.output_height; rows.advance()) {
        JSAMPROW row = inks.data();
        jpeg_read_scanlines(&codec_, &row, 1);
        conversion.convert(inks.data(), rows.next(), codec_.output_width);
      }
    });
  }

  Errors errors_;
  Source source_;
  jpeg_progress_mgr progress_{};
  jpeg_decompress_struct codec_{};
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

bool recognise(std::span<const std::uint8_t> start) {
  return start.size() >= 3 && start[0] == 0xFF && start[1] == 0xD8 && start[2] == 0xFF;
}

PixelBuffer decode(const ImageInput& input) {
  return std::make_unique<Decoder>(input)->decode();
}

PixelLayout encodedLayout(PixelLayout source) {
  return {source.isGrey() ? Channels::grey : Channels::rgb, Depth::eight};
}

void encode(PixelRows& picture, ImageOutput& output) {
  std::make_unique<Encoder>(output)->encode(picture);
}

}  // namespace kestrivane::jpeg
