#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/GifCodec.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gif_lib.h>

#include "platform/linux/images/LibraryHandle.hpp"
#include "platform/linux/images/Palette.hpp"
#include "platform/linux/images/PaletteMapper.hpp"
#include "platform/linux/images/SequentialReader.hpp"

namespace kestrivane::gif {
namespace {

struct ReaderCloser {
  void operator()(GifFileType* file) const { DGifCloseFile(file, nullptr); }
};
struct WriterCloser {
  void operator()(GifFileType* file) const { EGifCloseFile(file, nullptr); }
};
using Reader = std::unique_ptr<GifFileType, ReaderCloser>;
using Writer = std::unique_ptr<GifFileType, WriterCloser>;
using ColourMap = LibraryHandle<ColorMapObject, GifFreeMapObject>;

ImageError errorOf(int code) {
  const char* text = GifErrorString(code);
  return ImageError(std::string("GIF: ") + (text != nullptr ? text : "unknown error"));
}

void check(int result, const GifFileType& file) {
  if (result == GIF_ERROR) throw errorOf(file.Error);
}

extern "C" int readBytes(GifFileType* file, GifByteType* bytes, int count) {
  auto& reader = *static_cast<SequentialReader*>(file->UserData);
  return static_cast<int>(reader.readUpTo({bytes, static_cast<std::size_t>(count)}));
}

extern "C" int writeBytes(GifFileType* file, const GifByteType* bytes, int count) {
  auto& output = *static_cast<ImageOutput*>(file->UserData);
  return output.write({bytes, static_cast<std::size_t>(count)}) ? count : 0;
}

/// Reads an extension block, all parts of it, and keeps what says which colour is transparent.
void readExtension(GifFileType& file, GraphicsControlBlock& control) {
  int code = 0;
  GifByteType* block = nullptr;  // its first byte is the count of the others
  check(DGifGetExtension(&file, &code, &block), file);
  while (block != nullptr) {
    if (code == GRAPHICS_EXT_FUNC_CODE &&
        DGifExtensionToGCB(block[0], block + 1, &control) != GIF_OK)
      throw ImageError("GIF: a strange graphics control block");
    check(DGifGetExtensionNext(&file, &block), file);
  }
}

/// Reads up to the pixels of the first picture. Returns the place of the transparent colour, or
/// `NO_TRANSPARENT_COLOR`.
int findPicture(GifFileType& file) {
  GraphicsControlBlock control{0, false, 0, NO_TRANSPARENT_COLOR};
  for (;;) {
    GifRecordType record = UNDEFINED_RECORD_TYPE;
    check(DGifGetRecordType(&file, &record), file);
    switch (record) {
      case IMAGE_DESC_RECORD_TYPE:
        check(DGifGetImageDesc(&file), file);
        return control.TransparentColor;
      case EXTENSION_RECORD_TYPE:
        readExtension(file, control);
        break;
      default:
        throw ImageError("GIF: no picture in the file");
    }
  }
}

/// What a colour number is shown as.
struct ShownColour {
  std::array<std::uint8_t, 4> channels{};
  bool exists = false;
};

/// The first picture of a file whose pixels are next to be read.
class FirstPicture {
 public:
  FirstPicture(GifFileType& file, int transparentIndex)
      : file_(file), canvas_(makeCanvas(file, transparentIndex)) {
    const ColorMapObject& map = colourMap(file);
    const std::size_t colourChannels = canvas_.layout().isGrey() ? 1 : 3;
    for (std::size_t i = 0; i < static_cast<std::size_t>(map.ColorCount); ++i) {
      const GifColorType& colour = map.Colors[i];
      colours_[i] = {{colour.Red, colour.Green, colour.Blue}, true};
      colours_[i].channels[colourChannels] = 255;
    }
    // The transparent number may be one that has no colour.
    if (transparentIndex != NO_TRANSPARENT_COLOR)
      colours_[static_cast<std::uint8_t>(transparentIndex)] = {{}, true};
  }

  PixelBuffer read() {
    const auto height = static_cast<std::size_t>(file_.Image.Height);
    if (file_.Image.Interlace) {
      readRows(0, 8, height);
      readRows(4, 8, height);
      readRows(2, 4, height);
      readRows(1, 2, height);
    } else {
      readRows(0, 1, height);
    }
    return std::move(canvas_);
  }

 private:
  static const ColorMapObject& colourMap(const GifFileType& file) {
    const ColorMapObject* map = file.Image.ColorMap ? file.Image.ColorMap : file.SColorMap;
    if (map == nullptr) throw ImageError("GIF: no colours");
    return *map;
  }

  static PixelBuffer makeCanvas(const GifFileType& file, int transparentIndex) {
    const auto& frame = file.Image;
    if (frame.Width <= 0 || frame.Height <= 0) throw ImageError("GIF: the picture is empty");
    const int width = std::max(file.SWidth, frame.Left + frame.Width);
    const int height = std::max(file.SHeight, frame.Top + frame.Height);
    const bool isFull = frame.Width == width && frame.Height == height;
    const ColorMapObject& map = colourMap(file);
    const bool isGrey = std::all_of(
        map.Colors, map.Colors + map.ColorCount,
        [](const auto& colour) { return colour.Red == colour.Green && colour.Red == colour.Blue; });
    const bool hasAlpha = transparentIndex != NO_TRANSPARENT_COLOR || !isFull;
    const auto channels = static_cast<Channels>((isGrey ? 1 : 3) + (hasAlpha ? 1 : 0));
    auto canvas = PixelBuffer::create(static_cast<std::size_t>(width),
                                      static_cast<std::size_t>(height), {channels, Depth::eight});
    if (!isFull) std::memset(canvas.row(0), 0, canvas.byteCount());
    return canvas;
  }

  void readRows(std::size_t first, std::size_t step, std::size_t height) {
    const std::size_t channels = canvas_.layout().channelCount();
    std::vector<GifPixelType> line(static_cast<std::size_t>(file_.Image.Width));
    for (std::size_t y = first; y < height; y += step) {
      check(DGifGetLine(&file_, line.data(), file_.Image.Width), file_);
      std::uint8_t* target = canvas_.row(static_cast<std::size_t>(file_.Image.Top) + y) +
                             static_cast<std::size_t>(file_.Image.Left) * channels;
      for (const GifPixelType number : line) {
        const ShownColour& colour = colours_[number];
        if (!colour.exists) throw ImageError("GIF: a colour that the palette does not have");
        target = std::copy_n(colour.channels.begin(), channels, target);
      }
    }
  }

  GifFileType& file_;
  PixelBuffer canvas_;
  std::array<ShownColour, 256> colours_{};
};

/// The palette as the file has it: its size is a power of two.
ColourMap colourMapOf(const Palette& palette) {
  const int bits = std::max(1, GifBitSize(static_cast<int>(palette.colours.size())));
  ColourMap map(GifMakeMapObject(1 << bits, nullptr));
  if (!map) throw std::bad_alloc();
  std::ranges::transform(palette.colours, map->Colors, [](PaletteColour colour) {
    return GifColorType{colour.red, colour.green, colour.blue};
  });
  return map;
}

}  // namespace

bool recognise(std::span<const std::uint8_t> start) {
  const std::string_view text(reinterpret_cast<const char*>(start.data()), start.size());
  return text.starts_with("GIF87a") || text.starts_with("GIF89a");
}

PixelBuffer decode(const ImageInput& input) {
  SequentialReader reader(input, 0);
  int code = 0;
  const Reader file(DGifOpen(&reader, readBytes, &code));
  if (!file) throw errorOf(code);
  const int transparentIndex = findPicture(*file);
  return FirstPicture(*file, transparentIndex).read();
}

PixelLayout encodedLayout(PixelLayout source) {
  return {source.hasAlpha() ? Channels::rgba : Channels::rgb, Depth::eight};
}

void encode(PixelRows& picture, ImageOutput& output) {
  checkArea(picture.width(), picture.height());
  const Palette palette = Palette::of(picture);
  const ColourMap map = colourMapOf(palette);
  const auto width = static_cast<int>(picture.width());
  const auto height = static_cast<int>(picture.height());

  int code = 0;
  Writer file(EGifOpen(&output, writeBytes, &code));
  if (!file) throw errorOf(code);
  EGifSetGifVersion(file.get(), palette.transparentIndex.has_value());
  constexpr int colourResolution = 8;
  check(EGifPutScreenDesc(file.get(), width, height, colourResolution, 0, map.get()), *file);
  if (palette.transparentIndex) {
    const GraphicsControlBlock control{DISPOSAL_UNSPECIFIED, false, 0, *palette.transparentIndex};
    std::array<GifByteType, 4> bytes{};
    EGifGCBToExtension(&control, bytes.data());
    check(EGifPutExtension(file.get(), GRAPHICS_EXT_FUNC_CODE, bytes.size(), bytes.data()), *file);
  }
  check(EGifPutImageDesc(file.get(), 0, 0, width, height, false, nullptr), *file);

  PaletteMapper mapper(palette, picture.width());
  std::vector<std::uint8_t> scratch(picture.scratchBytes());
  std::vector<GifPixelType> line(picture.width());
  for (std::size_t y = 0; y < picture.height(); ++y) {
    mapper.mapRow(picture.row(y, scratch.data()), line);
    check(EGifPutLine(file.get(), line.data(), width), *file);
  }
  if (EGifCloseFile(file.release(), &code) == GIF_ERROR) throw errorOf(code);
}

}  // namespace kestrivane::gif
