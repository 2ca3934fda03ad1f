#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PngCodec.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <csetjmp>
#include <memory>

#include <png.h>

#include "platform/linux/images/ExifOrientation.hpp"
#include "platform/linux/images/MadeProfile.hpp"
#include "platform/linux/images/PngWriter.hpp"

namespace kestrivane::png {
namespace {

constexpr png_byte exifChunk[] = "eXIf";

/// Runs calls of libpng and throws when they fail. libpng reports an error by jumping back to
/// here, which destroys nothing on the way: `calls` has no local variables that need it.
template <typename Calls>
void guarded(std::jmp_buf& jump, Calls calls) {
  if (setjmp(jump) != 0) throw ImageError("libpng cannot read the picture");
  calls();
}

[[noreturn]] void fail(png_structp codec, png_const_charp) {
  std::longjmp(*static_cast<std::jmp_buf*>(png_get_error_ptr(codec)), 1);
}

void ignoreWarning(png_structp, png_const_charp) {}

bool isNear(double left, double right, double tolerance) {
  return std::abs(left - right) <= tolerance;
}

bool areNear(const Chromaticities& left, const Chromaticities& right) {
  constexpr double tolerance = 0.002;
  const auto near = [](Chromaticity a, Chromaticity b) {
    return isNear(a.x, b.x, tolerance) && isNear(a.y, b.y, tolerance);
  };
  return near(left.white, right.white) && near(left.red, right.red) &&
         near(left.green, right.green) && near(left.blue, right.blue);
}

class Decoder {
 public:
  explicit Decoder(const ImageInput& input) : input_(input) {
    codec_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, &jump_, fail, ignoreWarning);
    if (codec_ != nullptr) info_ = png_create_info_struct(codec_);
    if (info_ == nullptr) {
      png_destroy_read_struct(&codec_, nullptr, nullptr);
      throw std::bad_alloc();
    }
  }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;
  ~Decoder() { png_destroy_read_struct(&codec_, &info_, nullptr); }

  PixelBuffer decode() {
    guarded(jump_, [this] { readHeader(); });
    const png_uint_32 width = png_get_image_width(codec_, info_);
    const png_uint_32 height = png_get_image_height(codec_, info_);
    checkArea(width, height);
    int passes = 1;
    guarded(jump_, [&] {
      png_set_expand(codec_);  // palettes, shallow grey and transparent colours
      if constexpr (std::endian::native == std::endian::little) png_set_swap(codec_);
      passes = png_set_interlace_handling(codec_);
      png_read_update_info(codec_, info_);
    });
    PixelBuffer picture = PixelBuffer::create(
        width, height,
        {static_cast<Channels>(png_get_channels(codec_, info_)),
         png_get_bit_depth(codec_, info_) == 16 ? Depth::sixteen : Depth::eight});
    if (png_get_rowbytes(codec_, info_) != picture.rowBytes())
      throw ImageError("the PNG's rows have an unexpected size");
    guarded(jump_, [&] {
      for (int pass = 0; pass < passes; ++pass)
        for (png_uint_32 y = 0; y < height; ++y)
          png_read_row(codec_, picture.row(y), nullptr);
      png_read_end(codec_, info_);
    });
    picture.iccProfile = readProfile(picture.layout());
    return upright(std::move(picture), readOrientation());
  }

 private:
  static void readBytes(png_structp codec, png_bytep target, std::size_t count) {
    auto& self = *static_cast<Decoder*>(png_get_io_ptr(codec));
    while (count > 0) {
      if (self.next_ == self.filled_) {
        self.next_ = 0;
        self.filled_ = self.input_.readUpTo(self.offset_, self.buffer_);
        self.offset_ += self.filled_;
        if (self.filled_ == 0) png_error(codec, "the file is cut short");
      }
      const std::size_t step = std::min(count, self.filled_ - self.next_);
      std::copy_n(self.buffer_.data() + self.next_, step, target);
      self.next_ += step;
      target += step;
      count -= step;
    }
  }

  void readHeader() {
    png_set_read_fn(codec_, this, readBytes);
    png_set_user_limits(codec_, maximumSide, maximumSide);
    // Passed over without a look: libpng would take as much memory as their lengths claim.
    constexpr png_byte ignored[] =
        "bKGD\0hIST\0iTXt\0oFFs\0pCAL\0pHYs\0sCAL\0sPLT\0tEXt\0tIME\0zTXt";
    png_set_keep_unknown_chunks(codec_, PNG_HANDLE_CHUNK_NEVER, ignored, sizeof ignored / 5);
    // libpng's own reader of this chunk takes as much too; the general one has a limit.
    png_set_keep_unknown_chunks(codec_, PNG_HANDLE_CHUNK_ALWAYS, exifChunk, 1);
    png_set_crc_action(codec_, PNG_CRC_ERROR_QUIT, PNG_CRC_ERROR_QUIT);
    png_read_info(codec_, info_);
  }

  std::vector<std::uint8_t> readProfile(PixelLayout layout) const {
    png_charp name = nullptr;
    int compression = 0;
    png_bytep profile = nullptr;
    png_uint_32 size = 0;
    if (png_get_iCCP(codec_, info_, &name, &compression, &profile, &size) != 0)
      return {profile, profile + size};
    if (png_get_valid(codec_, info_, PNG_INFO_sRGB) != 0) return {};

    constexpr double sRGBExponent = 1 / 2.2;
    double exponent = sRGBExponent;
    png_get_gAMA(codec_, info_, &exponent);
    const bool usualGamma = isNear(exponent, sRGBExponent, 0.005) || exponent < 0.1;
    const TransferCurve curve{usualGamma ? 0 : 1 / exponent};
    if (layout.isGrey()) return usualGamma ? std::vector<std::uint8_t>() : makeGreyProfile(curve);
    Chromaticities colors = sRGBChromaticities;
    png_get_cHRM(codec_, info_, &colors.white.x, &colors.white.y, &colors.red.x, &colors.red.y,
                 &colors.green.x, &colors.green.y, &colors.blue.x, &colors.blue.y);
    if (usualGamma && areNear(colors, sRGBChromaticities)) return {};
    return makeProfile(colors, curve);
  }

  Orientation readOrientation() const {
    png_unknown_chunkp chunks = nullptr;
    const int count = png_get_unknown_chunks(codec_, info_, &chunks);
    for (const png_unknown_chunk& chunk : std::span(chunks, static_cast<std::size_t>(count)))
      if (std::equal(std::begin(exifChunk), std::end(exifChunk), chunk.name))
        return exifOrientation({chunk.data, chunk.size});
    return Orientation::topLeft;
  }

  const ImageInput& input_;
  std::uint64_t offset_ = 0;  // of the byte after the buffer
  std::array<std::uint8_t, 64 * 1024> buffer_;
  std::size_t next_ = 0;
  std::size_t filled_ = 0;
  std::jmp_buf jump_{};
  png_structp codec_ = nullptr;
  png_infop info_ = nullptr;
};

}  // namespace

bool recognise(std::span<const std::uint8_t> start) {
  constexpr std::array<std::uint8_t, 8> signature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  return start.size() >= signature.size() &&
         std::equal(signature.begin(), signature.end(), start.begin());
}

PixelBuffer decode(const ImageInput& input) {
  return std::make_unique<Decoder>(input)->decode();
}

PixelLayout encodedLayout(PixelLayout source) {
  return source;
}

void encode(PixelRows& picture, ImageOutput& output) {
  write(picture, output);
}

}  // namespace kestrivane::png
