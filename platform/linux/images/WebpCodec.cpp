#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/WebpCodec.hpp"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

#include <webp/decode.h>
#include <webp/demux.h>
#include <webp/encode.h>
#include <webp/mux.h>

#include "platform/linux/images/ExifOrientation.hpp"
#include "platform/linux/images/LibraryHandle.hpp"

namespace kestrivane::webp {
namespace {

// At 85 the loss cannot be seen at normal size; method 2 takes half the time of the library's
// default, 4, for one per cent more bytes.
constexpr float quality = 85;
constexpr int method = 2;

constexpr const char* wrongVersion = "WebP: the library has another version than its headers";

using Demuxer = LibraryHandle<WebPDemuxer, WebPDemuxDelete>;
using Muxer = LibraryHandle<WebPMux, WebPMuxDelete>;
using FrameIterator = LibraryHandle<WebPIterator, WebPDemuxReleaseIterator>;
using ChunkIterator = LibraryHandle<WebPChunkIterator, WebPDemuxReleaseChunkIterator>;
using PictureFreer = LibraryHandle<WebPPicture, WebPPictureFree>;
using WriterClearer = LibraryHandle<WebPMemoryWriter, WebPMemoryWriterClear>;
using DataClearer = LibraryHandle<WebPData, WebPDataClear>;

std::span<const std::uint8_t> spanOf(const WebPData& data) {
  return {data.bytes, data.size};
}

std::vector<std::uint8_t> chunk(const WebPDemuxer& demuxer, const char* name) {
  WebPChunkIterator found{};
  if (WebPDemuxGetChunk(&demuxer, name, 1, &found) == 0) return {};
  const ChunkIterator release(&found);
  const auto bytes = spanOf(found.chunk);
  return {bytes.begin(), bytes.end()};
}

/// Decodes a frame into its place in `canvas`.
void decodeFrame(const WebPIterator& frame, PixelBuffer& canvas) {
  WebPDecoderConfig config;
  if (WebPInitDecoderConfig(&config) == 0 ||
      WebPGetFeatures(frame.fragment.bytes, frame.fragment.size, &config.input) != VP8_STATUS_OK)
    throw ImageError("WebP: damaged");
  if (config.input.width != frame.width || config.input.height != frame.height)
    throw ImageError("WebP: a frame of another size than it should have");

  const auto x = static_cast<std::size_t>(frame.x_offset);
  const auto y = static_cast<std::size_t>(frame.y_offset);
  const std::size_t start = y * canvas.rowBytes() + x * canvas.layout().channelCount();
  config.output.colorspace = canvas.layout().hasAlpha() ? MODE_RGBA : MODE_RGB;
  config.output.is_external_memory = 1;
  config.output.u.RGBA.rgba = canvas.row(0) + start;
  config.output.u.RGBA.stride = static_cast<int>(canvas.rowBytes());
  config.output.u.RGBA.size = canvas.byteCount() - start;
  config.options.use_threads = 1;
  if (WebPDecode(frame.fragment.bytes, frame.fragment.size, &config) != VP8_STATUS_OK)
    throw ImageError("WebP: damaged or cut short");
}

/// Copies `rows` rows of `bytes` bytes.
void copyRows(const std::uint8_t* source, int sourceStride, std::uint8_t* target, int targetStride,
              int bytes, int rows) {
  for (int y = 0; y < rows; ++y, source += sourceStride, target += targetStride)
    std::memcpy(target, source, static_cast<std::size_t>(bytes));
}

/// Sets the planes of `target` from its row `top` on to those of `band`.
void copyBand(const WebPPicture& band, int top, WebPPicture& target) {
  const int halfWidth = (band.width + 1) / 2;
  const int halfHeight = (band.height + 1) / 2;
  copyRows(band.y, band.y_stride, target.y + top * target.y_stride, target.y_stride, band.width,
           band.height);
  copyRows(band.u, band.uv_stride, target.u + top / 2 * target.uv_stride, target.uv_stride,
           halfWidth, halfHeight);
  copyRows(band.v, band.uv_stride, target.v + top / 2 * target.uv_stride, target.uv_stride,
           halfWidth, halfHeight);
  if (target.a == nullptr) return;
  std::uint8_t* const alpha = target.a + top * target.a_stride;
  if (band.a != nullptr)
    copyRows(band.a, band.a_stride, alpha, target.a_stride, band.width, band.height);
  else  // the library makes no plane for what is wholly opaque
    std::memset(alpha, 255, static_cast<std::size_t>(target.a_stride * band.height));
}

/// Fills the planes of `target`, which has its size. The library takes a picture at once only, so
/// it is handed bands, as pictures of their own, lest a whole second frame be needed where rows
/// have to be converted.
void importPixels(const PixelRows& picture, WebPPicture& target) {
  constexpr std::size_t bandRows = 16;  // even, since two rows share their colours
  const bool hasAlpha = picture.layout().hasAlpha();
  target.colorspace = hasAlpha ? WEBP_YUV420A : WEBP_YUV420;
  if (WebPPictureAlloc(&target) == 0) throw std::bad_alloc();
  std::vector<std::uint8_t> scratch(picture.scratchBytes());
  std::vector<std::uint8_t> pixels(picture.rowBytes() * bandRows);
  for (std::size_t top = 0; top < picture.height(); top += bandRows) {
    const std::size_t rows = std::min(bandRows, picture.height() - top);
    for (std::size_t y = 0; y < rows; ++y)
      std::memcpy(pixels.data() + y * picture.rowBytes(), picture.row(top + y, scratch.data()),
                  picture.rowBytes());
    WebPPicture band;
    if (WebPPictureInit(&band) == 0) throw ImageError(wrongVersion);
    const PictureFreer freeBand(&band);
    band.width = target.width;
    band.height = static_cast<int>(rows);
    const auto import = hasAlpha ? WebPPictureImportRGBA : WebPPictureImportRGB;
    if (import(&band, pixels.data(), static_cast<int>(picture.rowBytes())) == 0)
      throw std::bad_alloc();
    copyBand(band, static_cast<int>(top), target);
  }
}

/// Writes `encoded`, a whole file, with a profile added to it.
void writeWithProfile(const WebPData& encoded, std::span<const std::uint8_t> profile,
                      ImageOutput& output) {
  constexpr int borrow = 0;
  const WebPData profileData{profile.data(), profile.size()};
  const Muxer muxer(WebPMuxNew());
  WebPData assembled;
  WebPDataInit(&assembled);
  const DataClearer clear(&assembled);
  if (!muxer || WebPMuxSetImage(muxer.get(), &encoded, borrow) != WEBP_MUX_OK ||
      WebPMuxSetChunk(muxer.get(), "ICCP", &profileData, borrow) != WEBP_MUX_OK ||
      WebPMuxAssemble(muxer.get(), &assembled) != WEBP_MUX_OK)
    throw ImageError("WebP: the profile cannot be added");
  output.write(spanOf(assembled));
}

}  // namespace

bool recognise(std::span<const std::uint8_t> start) {
  const std::string_view text(reinterpret_cast<const char*>(start.data()), start.size());
  return text.size() >= 12 && text.starts_with("RIFF") && text.substr(8, 4) == "WEBP";
}

PixelBuffer decode(const ImageInput& input) {
  const std::vector<std::uint8_t> bytes = input.readAll();
  const WebPData data{bytes.data(), bytes.size()};
  const Demuxer demuxer(WebPDemux(&data));
  WebPIterator frame{};
  if (!demuxer || WebPDemuxGetFrame(demuxer.get(), 1, &frame) == 0)
    throw ImageError("WebP: damaged or cut short");
  const FrameIterator release(&frame);

  const std::uint32_t width = WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_WIDTH);
  const std::uint32_t height = WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_HEIGHT);
  const bool isFull = static_cast<std::uint32_t>(frame.width) == width &&
                      static_cast<std::uint32_t>(frame.height) == height;
  const bool hasAlpha = frame.has_alpha != 0 || !isFull;
  auto canvas =
      PixelBuffer::create(width, height, {hasAlpha ? Channels::rgba : Channels::rgb, Depth::eight});
  if (!isFull) std::memset(canvas.row(0), 0, canvas.byteCount());
  decodeFrame(frame, canvas);
  canvas.iccProfile = chunk(*demuxer, "ICCP");
  return upright(std::move(canvas), exifOrientation(chunk(*demuxer, "EXIF")));
}

PixelLayout encodedLayout(PixelLayout source) {
  return {source.hasAlpha() ? Channels::rgba : Channels::rgb, Depth::eight};
}

void encode(PixelRows& picture, ImageOutput& output) {
  if (picture.width() > WEBP_MAX_DIMENSION || picture.height() > WEBP_MAX_DIMENSION)
    throw ImageError("WebP: the picture is too large for the format");
  WebPConfig config;
  WebPPicture target;
  if (WebPConfigInit(&config) == 0 || WebPPictureInit(&target) == 0) throw ImageError(wrongVersion);
  config.quality = quality;
  config.method = method;
  config.thread_level = 1;  // analysis and alpha on threads of their own

  const PictureFreer freePicture(&target);
  target.width = static_cast<int>(picture.width());
  target.height = static_cast<int>(picture.height());
  importPixels(picture, target);
  const auto embedded = picture.iccProfile();
  const std::vector<std::uint8_t> profile(embedded.begin(), embedded.end());
  picture.release();

  WebPMemoryWriter writer;
  WebPMemoryWriterInit(&writer);
  const WriterClearer clearWriter(&writer);
  target.writer = WebPMemoryWrite;
  target.custom_ptr = &writer;
  if (WebPEncode(&config, &target) == 0) throw ImageError("WebP: the picture cannot be encoded");

  const WebPData encoded{writer.mem, writer.size};
  if (profile.empty())
    output.write(spanOf(encoded));
  else
    writeWithProfile(encoded, profile, output);
}

}  // namespace kestrivane::webp
