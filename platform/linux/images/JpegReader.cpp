#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>

#include "platform/linux/images/Cmyk.hpp"
#include "platform/linux/images/ExifOrientation.hpp"
#include "platform/linux/images/JpegCodec.hpp"
#include "platform/linux/images/JpegErrors.hpp"
#include "platform/linux/images/UprightRows.hpp"

namespace kestrivane::jpeg {
namespace {

constexpr std::size_t inputBufferSize = 64 * 1024;
constexpr int exifMarker = JPEG_APP0 + 1;
constexpr int iccMarker = JPEG_APP0 + 2;

/// A scan of a few bytes may stand for the whole area. Encoders make about ten; small pictures may
/// have one for each frequency.
int maximumScans(std::uint64_t area) {
  constexpr std::uint64_t pixelsOfAllScans = std::uint64_t{1} << 30;
  return static_cast<int>(std::clamp<std::uint64_t>(pixelsOfAllScans / area, 16, 64));
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
  std::array<std::uint8_t, inputBufferSize> buffer;
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

}  // namespace

bool recognise(std::span<const std::uint8_t> start) {
  return start.size() >= 3 && start[0] == 0xFF && start[1] == 0xD8 && start[2] == 0xFF;
}

PixelBuffer decode(const ImageInput& input) {
  return std::make_unique<Decoder>(input)->decode();
}

}  // namespace kestrivane::jpeg
