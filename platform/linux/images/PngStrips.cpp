#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PngStrips.hpp"

#include <algorithm>
#include <vector>

#include <libdeflate.h>
#include <zlib.h>

#include "platform/linux/images/OrderedStrips.hpp"
#include "platform/linux/images/PngChunk.hpp"
#include "platform/linux/images/PngDeflater.hpp"

namespace kestrivane::png {
namespace {

/// Long enough that the missing look back over a strip's start costs under 1 %.
constexpr std::size_t stripBytes = 512 * 1024;

/// Each takes up to 2 MB: a strip before and after compression, and the compressor's tables.
constexpr std::size_t maximumThreads = 8;

/// Photos hardly get smaller with more effort, drawings do and take little time even so.
int levelFor(FilterChoice choice) {
  return choice == FilterChoice::perRow ? 2 : 7;
}

}  // namespace

void writeStrips(const PixelRows& picture, FilterChoice choice, ImageOutput& output) {
  const std::size_t rows = std::max<std::size_t>(stripBytes / (picture.rowBytes() + 1), 1);
  const std::size_t count = (picture.height() + rows - 1) / rows;
  std::uint32_t checksum = 1;  // Adler-32 of the strips written
  writeChunk("IDAT", zlibHeader, output);
  OrderedStrips strips(count, maximumThreads);
  strips.run([&] {
    RowFilter filter(picture);
    Deflater deflater(levelFor(choice));
    std::vector<std::uint8_t> filtered;
    while (const std::optional<std::size_t> strip = strips.take()) {
      filtered.clear();
      filter.append(*strip * rows, std::min((*strip + 1) * rows, picture.height()), choice,
                    filtered);
      const auto compressed =
          deflater.compress(filtered, *strip + 1 == count ? StreamEnd::yes : StreamEnd::no);
      const std::uint32_t ofChunk = chunkChecksum("IDAT", compressed);
      const std::uint32_t ofStrip = libdeflate_adler32(1, filtered.data(), filtered.size());
      strips.inOrder(*strip, [&] {
        writeChunk("IDAT", compressed, ofChunk, output);
        checksum = static_cast<std::uint32_t>(
            adler32_combine(checksum, ofStrip, static_cast<z_off_t>(filtered.size())));
      });
    }
  });
  writeChunk("IDAT", bigEndian(checksum), output);
}

}  // namespace kestrivane::png
